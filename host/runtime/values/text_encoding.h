// Conversion of text between encodings. Each invalid byte or unit becomes U+FFFD; a character that the target
// encoding lacks becomes '?'. In a single-byte encoding, each letter is first composed with its accents.
// UTF-16 and UTF-32 have the byte order of the machine; a byte order mark is converted like any character.
// All functions: [any].
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/// Whether convertText() supports an encoding. It supports every HostTextEncoding except encodingUnknown.
bool isKnownEncoding(std::uint32_t encoding);

/// Convert bytes from one encoding to another.
/// Returns  the converted bytes; std::nullopt if convertText() does not support `from` or `to`.
/// Errors   ProgramError for a character outside ASCII in Mac Roman or Windows Latin 1 text if the program
///          does not link the platform, which has the tables of both encodings.
std::optional<std::string> convertText(std::string_view bytes, std::uint32_t from, std::uint32_t to);

bool isAscii(std::string_view bytes);

/// Whether the bytes are well-formed UTF-8.
bool isUTF8(std::string_view bytes);

} // namespace host
