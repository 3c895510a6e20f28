// Encodings with one byte per character.
#pragma once

#include <array>
#include <cstdint>

namespace kvxplatform::corefoundation {

/// The characters of bytes 0x80 to 0xFF; 0 for a byte without a character. The other bytes are ASCII.
using UpperHalf = std::array<char16_t, 128>;

extern const UpperHalf asciiUpperHalf;
extern const UpperHalf isoLatin1UpperHalf;
extern const UpperHalf windowsLatin1UpperHalf;
extern const UpperHalf macRomanUpperHalf;

} // namespace kvxplatform::corefoundation
