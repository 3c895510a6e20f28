// 16-bit samples as bytes, and the names that buffers of them go by.
#pragma once

#include <cstddef>
#include <cstdint>

namespace soundclient {

/// What buffers hold and what they are said to hold.
enum class Labelling {
    bigAsLittle, ///< big-endian, called little-endian ("sowt")
    little,      ///< little-endian, and called so
    big,         ///< big-endian, and called so ("twos")
};

/// The format's code, as it stands in a buffer's description.
std::uint32_t formatOf(Labelling labelling);

/// `out` holds 2 * count bytes.
void writeSamples(Labelling labelling, const std::int16_t* samples, std::size_t count, std::uint8_t* out);

} // namespace soundclient
