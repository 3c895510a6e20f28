// Conversion between UTF-16 units and the bytes of a text encoding. The conversion never replaces or drops a
// character. All functions: [any].
#pragma once

#include <CoreFoundation/CFString.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kvxplatform::corefoundation {

/// Convert UTF-16 units to bytes. Throws std::bad_alloc.
/// Returns  nothing if the encoding is unsupported or lacks one of the characters.
std::optional<std::string> encode(std::u16string_view units, CFStringEncoding encoding);

/// Convert bytes to UTF-16 units. Throws std::bad_alloc.
/// Returns  nothing if the encoding is unsupported or the bytes are invalid in the encoding.
std::optional<std::u16string> decode(std::string_view bytes, CFStringEncoding encoding);

/// Returns  the maximum number of bytes for one UTF-16 unit; 0 if the encoding is unsupported.
int bytesPerUnit(CFStringEncoding encoding);

} // namespace kvxplatform::corefoundation
