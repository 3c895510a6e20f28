#include "host/kvx/text/number_text.h"

#include <charconv>
#include <cmath>

namespace kvx {

std::optional<double> readReal(std::string_view text)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    double number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number)) return std::nullopt;
    return number;
}

std::optional<std::vector<double>> readReals(std::string_view text)
{
    std::vector<double> numbers;
    for (;;) {
        const auto comma = text.find(',');
        const auto number = readReal(text.substr(0, comma));
        if (!number) return std::nullopt;
        numbers.push_back(*number);
        if (comma == text.npos) return numbers;
        text.remove_prefix(comma + 1);
    }
}

} // namespace kvx
