// Encodings of one byte a character.
#pragma once

#include <array>
#include <cstdint>

namespace kvxplatform::corefoundation {

/// The upper half, bytes 0x80 to 0xFF; the lower half is ASCII in all of them. 0 marks a byte without a
/// character.
using UpperHalf = std::array<char16_t, 128>;

extern const UpperHalf asciiUpperHalf;
extern const UpperHalf isoLatin1UpperHalf;
extern const UpperHalf windowsLatin1UpperHalf;
extern const UpperHalf macRomanUpperHalf;

} // namespace kvxplatform::corefoundation
