// Conversion of text between encodings, as bytes. Invalid bytes or units become U+FFFD, one each; characters
// that the target encoding lacks become '?'. For an encoding of single bytes, a letter and its accents are
// composed first. UTF-16 and UTF-32 have the machine's byte order; a byte order mark is an ordinary
// character.
// All functions: [any].
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/// Whether convertText supports an encoding: every HostTextEncoding but encodingUnknown.
bool isKnownEncoding(std::uint32_t encoding);

/// Convert bytes from one encoding to another.
/// Returns  nothing if either encoding is not supported.
/// Throws   ProgramError for a character outside ASCII in Mac Roman or Windows text if the program does not
///          link the platform, which has the tables of both encodings.
std::optional<std::string> convertText(std::string_view bytes, std::uint32_t from, std::uint32_t to);

bool isAscii(std::string_view bytes);

/// Whether all bytes are well-formed UTF-8.
bool isUTF8(std::string_view bytes);

} // namespace host
