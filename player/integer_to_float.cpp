#include "player/integer_to_float.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include <cpuid.h>
#include <tmmintrin.h>

namespace player {

namespace {

// The conversion to float rounds to nearest, and the scaling by a power of two is exact. The compiler can
// vectorise this loop because `source` and `target` do not overlap.
template <class Sample, int bits>
void convertWords(const unsigned char* __restrict source, std::size_t count, float* __restrict target)
{
    constexpr float scale = 1.0f / static_cast<float>(std::uint64_t{1} << bits);
    for (std::size_t i = 0; i < count; ++i) {
        Sample sample;
        std::memcpy(&sample, source + i * sizeof sample, sizeof sample);
        target[i] = static_cast<float>(sample) * scale;
    }
}

constexpr float scale24 = 1.0f / 16777216.0f;

void convertBigEndian24(const unsigned char* source, std::size_t count, float* target)
{
    static const Conversion fastest = hasSsse3() ? convertBigEndian24Ssse3 : convertBigEndian24Scalar;
    fastest(source, count, target);
}

// clang-format off
constexpr SampleForm forms[] = {
    // bit size  bytes  conversion
    {  7,        1,     convertWords<std::int8_t,    7> },
    {  8,        1,     convertWords<std::uint8_t,   8> },
    { 15,        2,     convertWords<std::int16_t,  15> },
    { 16,        2,     convertWords<std::uint16_t, 16> },
    { 23,        3,     nullptr                         }, // intentionally refused
    { 24,        3,     convertBigEndian24              },
    { 31,        4,     convertWords<std::int32_t,  31> },
    { 32,        4,     convertWords<std::uint32_t, 32> },
};
// clang-format on

} // namespace

void convertBigEndian24Scalar(const unsigned char* source, std::size_t count, float* target)
{
    for (std::size_t i = 0; i < count; ++i, source += 3) {
        const std::int32_t sample = source[0] << 16 | source[1] << 8 | source[2];
        target[i] = static_cast<float>(sample) * scale24;
    }
}

// The scalar version exists because the oldest supported processors lack SSSE3. Here one shuffle expands four
// samples (12 bytes) to four 32-bit integers.
__attribute__((target("ssse3"))) void convertBigEndian24Ssse3(const unsigned char* source, std::size_t count,
                                                              float* target)
{
    const __m128i order = _mm_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1);
    const __m128 scale = _mm_set1_ps(scale24);
    std::size_t i = 0;
    for (; i + 6 <= count; i += 4) { // a load reads 16 bytes and uses 12, so six samples must remain
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + 3 * i));
        const __m128i words = _mm_shuffle_epi8(bytes, order);
        _mm_storeu_ps(target + i, _mm_mul_ps(_mm_cvtepi32_ps(words), scale));
    }
    convertBigEndian24Scalar(source + 3 * i, count - i, target + i);
}

bool hasSsse3()
{
    unsigned a, b, c = 0, d;
    return __get_cpuid(1, &a, &b, &c, &d) && (c & bit_SSSE3);
}

const SampleForm* findSampleForm(std::int32_t bitSize)
{
    const auto form = std::find_if(std::begin(forms), std::end(forms),
                                   [bitSize](const SampleForm& each) { return each.bitSize == bitSize; });
    return form == std::end(forms) ? nullptr : form;
}

// A loop over floats could change a signalling not-a-number in a float register, so the bytes are copied.
void copyFloats(const unsigned char* source, std::size_t count, float* target)
{
    if (count > 0) std::memcpy(target, source, count * sizeof *target);
}

void interleave(const float* left, const float* right, std::size_t count, float* target)
{
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m128i l = _mm_loadu_si128(reinterpret_cast<const __m128i*>(left + i));
        const __m128i r = _mm_loadu_si128(reinterpret_cast<const __m128i*>(right + i));
        auto* const pairs = reinterpret_cast<__m128i*>(target + 2 * i);
        _mm_storeu_si128(pairs, _mm_unpacklo_epi32(l, r));
        _mm_storeu_si128(pairs + 1, _mm_unpackhi_epi32(l, r));
    }
    for (; i < count; ++i) {
        std::memcpy(target + 2 * i, left + i, sizeof *left);
        std::memcpy(target + 2 * i + 1, right + i, sizeof *right);
    }
}

void convertPairs(Conversion convert, std::size_t bytesPerSample, const unsigned char* left,
                  const unsigned char* right, std::size_t count, float* target)
{
    constexpr std::size_t blockSamples = 512; // a block of both channels fits into the first-level cache
    alignas(16) float channel[2][blockSamples];
    while (count > 0) {
        const std::size_t now = std::min(count, blockSamples);
        convert(left, now, channel[0]);
        convert(right, now, channel[1]);
        interleave(channel[0], channel[1], now, target);
        left += now * bytesPerSample;
        right += now * bytesPerSample;
        target += 2 * now;
        count -= now;
    }
}

} // namespace player
