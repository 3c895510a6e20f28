// Text between encodings, as plain bytes.
//
// Invalid input becomes U+FFFD (one for each byte or unit that fits nowhere); what the target cannot say
// becomes '?'. Text that goes to an encoding of single bytes is composed first, so that a letter and its
// accent find their byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/// Whether text of that encoding (one of TextEncoding, but not unknown) can be converted.
bool isKnownEncoding(std::uint32_t encoding);

/// The bytes in the other encoding; nothing if either is not known. UTF-16 and UTF-32 are in the machine's
/// byte order, without a byte order mark of ours; one in the text is a character like any other.
std::optional<std::string> convertText(std::string_view bytes, std::uint32_t from, std::uint32_t to);

bool isAscii(std::string_view bytes);
bool isUTF8(std::string_view bytes); ///< well-formed throughout

} // namespace host
