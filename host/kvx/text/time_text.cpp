#include "host/kvx/text/time_text.h"

#include "host/kvx/text/number_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

namespace kvx {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Read a number below 60 that begins with two digits. Only the last number of a time may have a fraction.
std::optional<double> readSixtieth(std::string_view text, bool isLast)
{
    const bool hasTwoDigits = text.size() >= 2 && isDigit(text[0]) && isDigit(text[1]);
    const bool isWhole = text.size() == 2;
    const bool hasFraction =
        text.size() > 3 && text[2] == '.' && std::all_of(text.begin() + 3, text.end(), isDigit);
    if (!hasTwoDigits || !(isWhole || (isLast && hasFraction))) return std::nullopt;
    const std::optional<double> number = readReal(text);
    return number && *number < 60 ? number : std::nullopt;
}

} // namespace

std::string formatTime(double seconds)
{
    const auto tenths = static_cast<long long>(std::max(0.0, seconds) * 10.0);
    const long long minutes = tenths / 600;
    const std::string rest = fmt::format("{:02}.{}", tenths / 10 % 60, tenths % 10);
    return minutes < 60 ? fmt::format("{}:{}", minutes, rest)
                        : fmt::format("{}:{:02}:{}", minutes / 60, minutes % 60, rest);
}

std::string formatTimeOption(double seconds)
{
    const long long thousandths = std::llround(seconds * 1000), minutes = thousandths / 60000;
    std::string text =
        minutes < 60 ? fmt::format("{}", minutes) : fmt::format("{}:{:02}", minutes / 60, minutes % 60);
    text += fmt::format(":{:02}.{:03}", thousandths / 1000 % 60, thousandths % 1000);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

std::optional<double> readTime(std::string_view text)
{
    std::size_t colon = text.find(':');
    if (colon == text.npos) return readReal(text);
    if (colon == 0 || !std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(colon), isDigit))
        return std::nullopt;
    std::optional<double> time = readReal(text.substr(0, colon)); // whole hours or minutes
    for (int colons = 1; time && colon != text.npos; ++colons) {
        if (colons > 2) return std::nullopt;
        text.remove_prefix(colon + 1);
        colon = text.find(':');
        const std::optional<double> next = readSixtieth(text.substr(0, colon), colon == text.npos);
        if (!next) return std::nullopt;
        time = *time * 60 + *next;
    }
    return time;
}

} // namespace kvx
