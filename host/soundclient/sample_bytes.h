// Writes PCM16 samples in little-endian or big-endian byte order, and gives the format code (label) for each
// order.
// All functions: [any].
#pragma once

#include <cstddef>
#include <cstdint>

namespace soundclient {

/// The byte order of the samples in a buffer, and the byte order that the description of the buffer states.
enum class Labelling {
    bigAsLittle, ///< big-endian samples, described as little-endian ("sowt")
    little,      ///< little-endian samples, described as "sowt"
    big,         ///< big-endian samples, described as "twos"
};

/// The format code for the description of a buffer.
std::uint32_t formatOf(Labelling labelling);

/// Write the bytes of `count` samples to `out`, in the byte order of `labelling`.
/// Shape  `out` has 2 * count bytes.
void writeSamples(Labelling labelling, const std::int16_t* samples, std::size_t count, std::uint8_t* out);

} // namespace soundclient
