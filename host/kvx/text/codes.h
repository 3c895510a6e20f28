// Four-character codes (selectors, scopes, classes) and statuses of the platform, as text. The first
// character of a code is its highest byte.
// All functions: [any].
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace kvx {

using Code = std::uint32_t;
using Status = std::int32_t;

/// The four characters of a code, printable or not.
std::string charactersOf(Code code);

/// Format a code in quotes ('uid '), or as a hexadecimal number (0x0000002A) if a character of the code is
/// not printable or is a quote. readCodeOrNumber() reads both forms.
std::string formatCode(Code code);

/// Read a code of one to four characters, with or without quotes. A shorter code is padded with blanks.
/// Errors  nullopt for an empty text or more than four characters.
std::optional<Code> readCode(std::string_view text);

/// Read a code, or a number if the text begins with 0x or has more than four characters.
/// Errors  nullopt for any other text.
std::optional<Code> readCodeOrNumber(std::string_view text);

/// A status of the platform and its meaning for the user.
struct StatusFact {
    Status status;
    const char* meaning; ///< a clause without a period
};

/// The table of known statuses.
std::initializer_list<StatusFact> statusFacts();

/// Format a status as code, number and meaning: "'who?' (2003332927): the object has no such property …".
std::string formatStatus(Status status);

} // namespace kvx
