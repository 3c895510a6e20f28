#include "host/kvx/text/number_text.h"

#include "host/kvx/text/failure.h"

#include <fmt/core.h>

#include <algorithm>

namespace kvx {

std::optional<double> readReal(std::string_view text)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    return readDecimal<double>(text);
}

std::optional<std::vector<double>> readReals(std::string_view text)
{
    std::vector<double> numbers;
    for (;;) {
        const std::size_t comma = text.find(',');
        const std::optional<double> number = readReal(text.substr(0, comma));
        if (!number) return std::nullopt;
        numbers.push_back(*number);
        if (comma == text.npos) return numbers;
        text.remove_prefix(comma + 1);
    }
}

bool hasHexPrefix(std::string_view text)
{
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

std::optional<std::uint32_t> readNumber(std::string_view text)
{
    if (!hasHexPrefix(text)) return readDecimal<std::uint32_t>(text);
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + 2, end, number, 16);
    if (rest != end || error != std::errc()) return std::nullopt;
    return number;
}

std::string dumpBytes(std::string_view bytes)
{
    constexpr std::size_t perLine = 16;
    std::string text;
    for (std::size_t start = 0; start < bytes.size(); start += perLine) {
        std::string hex, characters;
        for (const char c : bytes.substr(start, perLine)) {
            hex += fmt::format(" {:02x}", static_cast<unsigned char>(c));
            characters += c >= ' ' && c <= '~' ? c : '.';
        }
        text += fmt::format("{}{:04x} {:<{}}  |{}|", start ? "\n" : "", start, hex, perLine * 3, characters);
    }
    return text;
}

std::string parseHex(std::string_view text)
{
    std::string digits(text);
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\n'; };
    digits.erase(std::remove_if(digits.begin(), digits.end(), isBlank), digits.end());
    std::string bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        unsigned byte = 0;
        const char* const first = digits.data() + at;
        const char* const last = first + std::min<std::size_t>(2, digits.size() - at);
        const auto [rest, error] = std::from_chars(first, last, byte, 16);
        if (rest != first + 2 || error != std::errc())
            throw WrongUsage(fmt::format(
                "\"{}\" is not a list of bytes; write two digits per byte, such as 00 00 80 3f", text));
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

} // namespace kvx
