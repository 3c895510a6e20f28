// Reads numbers and bytes that a user has written, and formats bytes as text.
// All functions: [any].
#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kvx {

/// Read a whole text as one decimal number of type T.
/// Errors  nullopt for any other text, a number out of range, or a number that is not finite.
template <class T>
std::optional<T> readDecimal(std::string_view text)
{
    T number{};
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (rest != end || error != std::errc()) return std::nullopt;
    if constexpr (std::is_floating_point_v<T>)
        if (!std::isfinite(number)) return std::nullopt;
    return number;
}

/// Read a real number, with or without a sign: "1", "-0.5", "+3", "1e3".
/// Errors  nullopt for any other text.
std::optional<double> readReal(std::string_view text);

/// Read a list of real numbers with commas between the numbers: "1,-2,3".
/// Errors  nullopt if a number is missing or wrong.
std::optional<std::vector<double>> readReals(std::string_view text);

/// Read a whole number from 0 to 2^32 - 1, decimal or hexadecimal (0x…).
/// Errors  nullopt for any other text.
std::optional<std::uint32_t> readNumber(std::string_view text);

/// Whether a text begins with 0x or 0X and has at least one more character.
bool hasHexPrefix(std::string_view text);

/// Format bytes, 16 per line: offset, bytes in hexadecimal, characters.
/// Returns  "" if there are no bytes.
std::string dumpBytes(std::string_view bytes);

/// Read bytes written as pairs of hexadecimal digits, with or without blanks between the pairs.
/// Errors  throws WrongUsage for any other text.
std::string parseHex(std::string_view text);

} // namespace kvx
