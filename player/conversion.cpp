#include "player/conversion.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace player {

namespace {

// Each sample becomes a float first, to the nearest, and is then scaled by a power of two, exactly.
template <class Sample, int bits>
void convertWords(const unsigned char* source, std::size_t count, float* target, std::size_t stride)
{
    constexpr float scale = 1.0f / static_cast<float>(std::uint64_t{1} << bits);
    for (std::size_t i = 0; i < count; ++i) {
        Sample sample;
        std::memcpy(&sample, source + i * sizeof sample, sizeof sample);
        target[i * stride] = static_cast<float>(sample) * scale;
    }
}

void convertBigEndian24(const unsigned char* source, std::size_t count, float* target, std::size_t stride)
{
    constexpr float scale = 1.0f / 16777216.0f;
    for (std::size_t i = 0; i < count; ++i, source += 3) {
        const std::int32_t sample = source[0] << 16 | source[1] << 8 | source[2];
        target[i * stride] = static_cast<float>(sample) * scale;
    }
}

// clang-format off
constexpr SampleForm forms[] = {
    // bit size  bytes  conversion
    {  7,        1,     convertWords<std::int8_t,    7> },
    {  8,        1,     convertWords<std::uint8_t,   8> },
    { 15,        2,     convertWords<std::int16_t,  15> },
    { 16,        2,     convertWords<std::uint16_t, 16> },
    { 23,        3,     nullptr                         }, // refused on purpose: there is no signed 24-bit form
    { 24,        3,     convertBigEndian24              },
    { 31,        4,     convertWords<std::int32_t,  31> },
    { 32,        4,     convertWords<std::uint32_t, 32> },
};
// clang-format on

} // namespace

const SampleForm* findSampleForm(std::int32_t bitSize)
{
    const auto form = std::find_if(std::begin(forms), std::end(forms),
                                   [bitSize](const SampleForm& each) { return each.bitSize == bitSize; });
    return form == std::end(forms) ? nullptr : form;
}

// As words, not floats: a float register may change a signalling NaN.
void copyFloats(const unsigned char* source, std::size_t count, float* target, std::size_t stride)
{
    if (stride == 1) {
        std::memcpy(target, source, count * sizeof *target);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) std::memcpy(target + i * stride, source + i * sizeof *target, 4);
}

} // namespace player
