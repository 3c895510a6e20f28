// Conversion of integer samples to 32-bit float.
//
// Odd bit sizes are signed; even ones are unsigned and scaled into 0 … 1 without re-centring. Samples are in
// the processor's byte order, except those of 24 bits, which are big-endian.
// All functions: [any].
#pragma once

#include <cstddef>
#include <cstdint>

namespace player {

/// Convert `count` samples. `source` needs no alignment and does not overlap `target`.
using Conversion = void (*)(const unsigned char* source, std::size_t count, float* target);

struct SampleForm {
    std::int32_t bitSize;
    std::int32_t bytes;    ///< per sample
    Conversion conversion; ///< null: a known size that is refused
};

/// Return the form of a BitSize, or null if it is unknown.
const SampleForm* findSampleForm(std::int32_t bitSize);

/// Copy `count` floats, bit for bit.
void copyFloats(const unsigned char* source, std::size_t count, float* target);

/// Convert samples of 24 bits: on every processor, and on processors with SSSE3.
void convertBigEndian24Scalar(const unsigned char* source, std::size_t count, float* target);
void convertBigEndian24Ssse3(const unsigned char* source, std::size_t count, float* target);
bool hasSsse3();

/// Convert two channels of `bytesPerSample` bytes into `count` interleaved pairs, left sample first.
void convertPairs(Conversion convert, std::size_t bytesPerSample, const unsigned char* left,
                  const unsigned char* right, std::size_t count, float* target);

/// Interleave two channels of `count` samples, left sample first, bit for bit.
void interleave(const float* left, const float* right, std::size_t count, float* target);

} // namespace player
