// The bytes of PCM16 samples, and the labels of their byte order.
// All functions: [any].
#pragma once

#include <cstddef>
#include <cstdint>

namespace soundclient {

/// The byte order of the samples in a buffer, and the byte order in the description of the buffer.
enum class Labelling {
    bigAsLittle, ///< big-endian samples, described as little-endian ("sowt")
    little,      ///< little-endian samples, described as "sowt"
    big,         ///< big-endian samples, described as "twos"
};

/// The format code for the description of a buffer.
std::uint32_t formatOf(Labelling labelling);

/// Write the bytes of `count` samples.
/// Shape  `out` has 2 * count bytes.
void writeSamples(Labelling labelling, const std::int16_t* samples, std::size_t count, std::uint8_t* out);

} // namespace soundclient
