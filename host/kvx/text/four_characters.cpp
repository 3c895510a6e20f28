#include "host/kvx/text/four_characters.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace kvx {
namespace {

bool isPrintable(char c) { return c >= ' ' && c <= '~' && c != '\''; }

bool isMarkedHexadecimal(std::string_view text)
{
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

std::string_view withoutQuotes(std::string_view text)
{
    const bool isQuoted = text.size() > 2 && text.front() == '\'' && text.back() == '\'';
    return isQuoted ? text.substr(1, text.size() - 2) : text;
}

} // namespace

std::string charactersOf(Code code)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += char(code >> shift & 0xFF);
    return text;
}

std::string printCode(Code code)
{
    const std::string text = charactersOf(code);
    return std::all_of(text.begin(), text.end(), isPrintable) ? fmt::format("'{}'", text)
                                                              : fmt::format("0x{:08X}", code);
}

std::optional<Code> readCode(std::string_view text)
{
    std::string characters(withoutQuotes(text));
    if (characters.empty() || characters.size() > 4) return std::nullopt;
    characters.resize(4, ' ');
    Code code = 0;
    for (char c : characters) code = code << 8 | static_cast<unsigned char>(c);
    return code;
}

std::optional<std::uint32_t> readNumber(std::string_view text)
{
    const bool isHex = isMarkedHexadecimal(text);
    if (isHex) text.remove_prefix(2);
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number, isHex ? 16 : 10);
    if (text.empty() || rest != end || error != std::errc()) return std::nullopt;
    return number;
}

std::optional<Code> readCodeOrNumber(std::string_view text)
{
    const std::optional<Code> code = isMarkedHexadecimal(text) ? std::nullopt : readCode(text);
    return code ? code : readNumber(text);
}

} // namespace kvx
