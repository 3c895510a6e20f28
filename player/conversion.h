// Integer samples to float.
//
// The program's convention: odd sizes are signed, even sizes unsigned and scaled into 0 … 1 without
// re-centring. Words are in the processor's byte order, except 24 bits, which are big-endian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace player {

/// Convert `count` samples from `source` to `target`. The source needs no alignment, and does not overlap.
using Conversion = void (*)(const unsigned char* source, std::size_t count, float* target);

struct SampleForm {
    std::int32_t bitSize;
    std::int32_t bytes;    ///< per sample
    Conversion conversion; ///< null: a size that is known and refused
};

/// The form that a BitSize names, or null.
const SampleForm* findSampleForm(std::int32_t bitSize);

/// Copy `count` floats, bit for bit.
void copyFloats(const unsigned char* source, std::size_t count, float* target);

/// The two forms of 24 bits: the second is for processors that can shuffle bytes.
void convertBigEndian24Singly(const unsigned char* source, std::size_t count, float* target);
void convertBigEndian24Shuffled(const unsigned char* source, std::size_t count, float* target);
bool canShuffleBytes();

/// left[0], right[0], left[1], ... bit for bit.
void interleave(const float* left, const float* right, std::size_t count, float* target);

/// Convert two channels of `bytesPerSample` bytes into `count` pairs, the left one first.
void convertPairs(Conversion convert, std::size_t bytesPerSample, const unsigned char* left,
                  const unsigned char* right, std::size_t count, float* target);

} // namespace player
