#include "host/kvx/commands.h"

#include <fmt/format.h>

namespace kvx {

CLI::Validator inRange(double low, double high)
{
    const auto check = [low, high](const std::string& text) {
        double value = 0;
        const bool isGood = CLI::detail::lexical_cast(text, value) && value >= low && value <= high;
        return isGood ? std::string() : fmt::format("{} is not a number from {} to {}", text, low, high);
    };
    return CLI::Validator(check, fmt::format("{} - {}", low, high));
}

} // namespace kvx
