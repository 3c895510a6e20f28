#include "host/kvx/text/hex_text.h"

#include "host/kvx/text/failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace kvx {

std::string dumpBytes(std::string_view bytes)
{
    constexpr std::size_t perLine = 16;
    std::string text;
    for (std::size_t start = 0; start < bytes.size(); start += perLine) {
        const std::string_view line = bytes.substr(start, perLine);
        std::string hex, characters;
        for (char c : line) {
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
        const char* first = digits.data() + at;
        const char* last = first + std::min<std::size_t>(2, digits.size() - at);
        const auto [rest, error] = std::from_chars(first, last, byte, 16);
        if (rest != first + 2 || error != std::errc())
            throw WrongUsage(fmt::format(
                "\"{}\" is not a row of bytes; write two digits a byte, such as 00 00 80 3f", text));
        bytes += char(byte);
    }
    return bytes;
}

} // namespace kvx
