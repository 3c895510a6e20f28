// Conversion of integer samples to 32-bit float.
//
// An odd bit size means signed samples; an even bit size means unsigned samples, scaled into 0 … 1 without
// re-centring. Samples of 24 bits are big-endian; all other samples have the processor's byte order.
// All functions: [any].
#pragma once

#include <cstddef>
#include <cstdint>

namespace player {

/// Convert `count` samples to floats. `source` needs no alignment and must not overlap `target`.
using Conversion = void (*)(const unsigned char* source, std::size_t count, float* target);

/// One sample format that the adding methods know.
struct SampleForm {
    std::int32_t bitSize;
    std::int32_t bytes;    ///< size of one sample, in bytes
    Conversion conversion; ///< conversion function; null for a known bit size that is refused
};

/// Return the sample format for a BitSize argument, or null for an unknown BitSize.
const SampleForm* findSampleForm(std::int32_t bitSize);

/// Copy `count` floats from `source` without changing a bit.
void copyFloats(const unsigned char* source, std::size_t count, float* target);

/// Convert big-endian samples of 24 bits. The Scalar version runs on every processor; the Ssse3 version needs
/// a processor for which hasSsse3() returns true.
void convertBigEndian24Scalar(const unsigned char* source, std::size_t count, float* target);
void convertBigEndian24Ssse3(const unsigned char* source, std::size_t count, float* target);
bool hasSsse3();

/// Convert two channels of `count` samples, `bytesPerSample` bytes each, into interleaved pairs, left sample
/// first.
void convertPairs(Conversion convert, std::size_t bytesPerSample, const unsigned char* left,
                  const unsigned char* right, std::size_t count, float* target);

/// Interleave two channels of `count` samples, left sample first, without changing a bit.
void interleave(const float* left, const float* right, std::size_t count, float* target);

} // namespace player
