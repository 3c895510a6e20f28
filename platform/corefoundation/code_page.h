// Text encodings with one byte per character.
#pragma once

#include <array>
#include <cstdint>

namespace kvxplatform::corefoundation {

/// The characters of the bytes 0x80 to 0xFF in an encoding; 0 for a byte without a character. The bytes below
/// 0x80 are ASCII in every encoding.
using UpperHalf = std::array<char16_t, 128>;

extern const UpperHalf asciiUpperHalf;
extern const UpperHalf isoLatin1UpperHalf;
extern const UpperHalf windowsLatin1UpperHalf;
extern const UpperHalf macRomanUpperHalf;

} // namespace kvxplatform::corefoundation
