// Codes of four characters: selectors, scopes, classes, statuses. The first character is the highest byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kvx {

using Code = std::uint32_t;

/// The code as its four characters, whatever they are.
std::string charactersOf(Code code);

/// In quotes where all four can be printed ('uid '), else as a hexadecimal number (0x0000002A).
/// readCodeOrNumber reads either.
std::string printCode(Code code);

/// One to four characters, filled up with blanks, in quotes or not. Nothing for longer or empty text.
std::optional<Code> readCode(std::string_view text);

/// A whole number from 0 to 2^32 - 1, decimal or hexadecimal (0x…). Nothing for anything else.
std::optional<std::uint32_t> readNumber(std::string_view text);

/// Characters or a number. What begins with 0x is a number, and so are more than four digits.
std::optional<Code> readCodeOrNumber(std::string_view text);

} // namespace kvx
