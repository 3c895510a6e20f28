// Conversion between UTF-16 units and the bytes of an encoding. It is strict: no character is replaced or
// dropped. All functions: [any].
#pragma once

#include <CoreFoundation/CFString.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kvxplatform::corefoundation {

/// Returns  nothing if the encoding is unsupported or lacks one of the characters. Throws std::bad_alloc.
std::optional<std::string> encode(std::u16string_view units, CFStringEncoding encoding);

/// Returns  nothing if the encoding is unsupported or the bytes are invalid in it. Throws std::bad_alloc.
std::optional<std::u16string> decode(std::string_view bytes, CFStringEncoding encoding);

/// Returns  the maximum number of bytes for one unit; 0 if the encoding is unsupported.
int bytesPerUnit(CFStringEncoding encoding);

} // namespace kvxplatform::corefoundation
