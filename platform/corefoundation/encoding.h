// Text between UTF-16 units and the bytes of an encoding. Nothing is replaced or left out: what has no place
// on the other side is refused.
#pragma once

#include <CoreFoundation/CFString.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kvxplatform::corefoundation {

/// The bytes of `units`; nothing if the encoding is not known here or a character has no place in it.
/// Throws std::bad_alloc.
std::optional<std::string> encode(std::u16string_view units, CFStringEncoding encoding);

/// The units of `bytes`; nothing if the encoding is not known here or the bytes are not valid in it.
/// Throws std::bad_alloc.
std::optional<std::u16string> decode(std::string_view bytes, CFStringEncoding encoding);

/// The most bytes that one unit takes; 0 if the encoding is not known here.
int bytesPerUnit(CFStringEncoding encoding);

} // namespace kvxplatform::corefoundation
