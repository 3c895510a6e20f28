// The SIMD kernels return the same bits as scalar code, for all lengths and alignments, and for ordinary and
// special values.
#include "player/integer_to_float.h"
#include "player/span.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace {

using Words = std::vector<std::uint32_t>;

std::uint32_t bitsOf(float value)
{
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float floatOf(std::uint32_t bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// Return whether two floats have equal bits or are both not-a-number.
bool isSame(float a, float b) { return bitsOf(a) == bitsOf(b) || (std::isnan(a) && std::isnan(b)); }

const std::uint32_t specials[] = {0x00000000, 0x80000000, 0x00000001, 0x807FFFFF, 0x7F7FFFFF,
                                  0xFF7FFFFF, 0x7F800000, 0xFF800000, 0x7FC00000, 0x7F800001,
                                  0xFFFFFFFF, 0x3F800000, 0xBF7FFFFF, 0x34000000};

std::vector<float> samples(std::mt19937& random, std::size_t count, bool hasSpecials)
{
    std::vector<float> result(count);
    std::uniform_real_distribution<float> level(-1, 1);
    for (float& each : result)
        each =
            hasSpecials && random() % 3 ? floatOf(specials[random() % std::size(specials)]) : level(random);
    return result;
}

// ---- interpolation ----

const float steps[] = {
    1, 0.5f,       0.25f,         0.91875f,   44100.0f / 48000.0f, 22050.0f / 44100.0f, 48000.0f / 44100.0f,
    2, 3.9999998f, 0.0009765625f, 1.0000001f, 0.99999994f,         192000.0f / 8000.0f};

/// Return the position after `count` steps that are added one at a time.
double stepped(double position, double step, UInt32 count)
{
    for (UInt32 i = 0; i < count; ++i) position += step;
    return position;
}

constexpr std::size_t mostChannels = 8; // largest number of output channels of a kernel

using Interpolate = void (*)(const player::Span&, float*);
struct Kernel {
    const char* name;
    Interpolate simd, scalar;
    int channels;
};

/// Call a stereo kernel for an output with `channels` channels.
template <void (*kernel)(const player::Span&, float*, UInt32), UInt32 channels>
void stereoInto(const player::Span& span, float* out)
{
    kernel(span, out, channels);
}

/// Return the kernels that this processor can run.
std::vector<Kernel> kernels()
{
    using namespace player;
    std::vector<Kernel> result = {
        {"mono", interpolateMono, interpolateMonoScalar, 1},
        {"stereo", stereoInto<interpolateStereo, 2>, stereoInto<interpolateStereoScalar, 2>, 2},
        {"stereo into 3", stereoInto<interpolateStereo, 3>, stereoInto<interpolateStereoScalar, 3>, 2},
        {"mono, SSE", interpolateMonoSse, interpolateMonoScalar, 1},
        {"stereo, SSE", stereoInto<interpolateStereoSse, 2>, stereoInto<interpolateStereoScalar, 2>, 2},
        {"stereo into 8, SSE", stereoInto<interpolateStereoSse, 8>, stereoInto<interpolateStereoScalar, 8>,
         2},
    };
    if (hasAvx()) {
        result.push_back({"mono, AVX", interpolateMonoAvx, interpolateMonoScalar, 1});
        result.push_back(
            {"stereo, AVX", stereoInto<interpolateStereoAvx, 2>, stereoInto<interpolateStereoScalar, 2>, 2});
        result.push_back({"stereo into 8, AVX", stereoInto<interpolateStereoAvx, 8>,
                          stereoInto<interpolateStereoScalar, 8>, 2});
    }
    return result;
}

/// Compare every SIMD kernel with its scalar kernel over one span. The output begins `misaligned` floats
/// after the beginning of allocated memory.
void expectSame(const player::Span& span, std::size_t misaligned)
{
    std::vector<float> simd(mostChannels * span.frames + 2 + misaligned, 7), scalar(simd);
    for (const Kernel& kernel : kernels()) {
        kernel.simd(span, simd.data() + misaligned);
        kernel.scalar(span, scalar.data() + misaligned);
        for (std::size_t i = 0; i < simd.size(); ++i)
            ASSERT_TRUE(isSame(simd[i], scalar[i]))
                << kernel.name << ", step " << span.step << ", " << span.frames << " frames, at " << i;
    }
}

TEST(PlayerSimd, InterpolatesLikeTheScalarKernels)
{
    std::mt19937 random(1);
    for (const bool hasSpecials : {false, true})
        for (const float step : steps)
            for (UInt32 frames = 0; frames <= 70; ++frames)
                for (std::size_t misaligned = 0; misaligned < 16; ++misaligned) {
                    const double position = stepped(0, step, random() % 50);
                    const double last = position + step * (frames ? frames - 1 : 0);
                    const auto count = static_cast<std::size_t>(last) + 2; // frames up to the last neighbour
                    const std::size_t skipped = misaligned % 4;
                    const std::vector<float> data = samples(random, 2 * count + skipped, hasSpecials);
                    expectSame({data.data() + skipped, position, step, frames}, misaligned / 4);
                }
}

TEST(PlayerSimd, InterpolatesFarFromTheStart)
{
    std::mt19937 random(7);
    constexpr UInt32 frames = 67;
    const std::vector<float> data = samples(random, 4 * frames, false);
    // The largest start position, 134217727, is the largest number of stereo frames that one buffer can hold.
    for (const double start : {1e6, 16777215.0, 134217727.0})
        for (const float step : {1.0f, 0.5f, 0.91875f, 2.0f})
            for (const int channels : {1, 2}) {
                // The kernels never read the samples before the span, so these samples need no memory.
                const auto distance = static_cast<std::ptrdiff_t>(start) * channels;
                const auto base = reinterpret_cast<std::uintptr_t>(data.data()) -
                                  static_cast<std::uintptr_t>(distance) * sizeof(float);
                const player::Span span = {reinterpret_cast<const float*>(base), start, step, frames};
                std::vector<float> simd(mostChannels * frames), scalar(mostChannels * frames);
                for (const Kernel& kernel : kernels()) {
                    if (kernel.channels != channels) continue;
                    kernel.simd(span, simd.data());
                    kernel.scalar(span, scalar.data());
                    ASSERT_EQ(simd, scalar) << kernel.name << ' ' << start << ' ' << step;
                }
            }
}

const struct {
    double position;
    float step;
    bool isExact;
    const char* why;
} positions[] = {
    {0, 1, true, "the start"},
    {0, 0.91875f, true, "the start"},
    {0.91875f, 0.91875f, true, "one step on"},
    {1e6, 0.91875f, true, "whole frames"},
    {0.1, 0.91875f, false, "a tenth is not a multiple of the step's last place"},
    {std::ldexp(1.0, -24), 0.91875f, true, "the step's last place"},
    {std::ldexp(1.0, -25), 0.91875f, false, "half of it"},
    {std::ldexp(1.0, 28) - 1, 0.91875f, true, "just below 2^52 last places"},
    {std::ldexp(1.0, 28), 0.91875f, false, "2^52 last places"},
    {-1, 1, false, "before the data"},
    {std::numeric_limits<double>::quiet_NaN(), 1, false, "not-a-number"},
    {std::numeric_limits<double>::infinity(), 1, false, "infinity"},
    {0, 0, false, "a step of 0"},
    {0, -1, false, "a negative step"},
    {0, std::numeric_limits<float>::quiet_NaN(), false, "a step of not-a-number"},
    {0, std::numeric_limits<float>::infinity(), false, "an infinite step"},
    {0, std::numeric_limits<float>::denorm_min(), false, "a denormal step"},
    {0, 4096, true, "the largest step"},
    {0, 4096.001f, false, "above the largest step"},
};

TEST(PlayerSpan, IsExactOnlyWhereNoSumIsRounded)
{
    for (const auto& row : positions) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(player::exactFrames(row.position, row.step, 100), row.isExact ? 100u : 0u);
    }
    EXPECT_EQ(player::exactFrames(0, 1, 4096), 4096u);
    EXPECT_EQ(player::exactFrames(0, 1, 4097), 4096u);
    EXPECT_EQ(player::exactFrames(0, 1, 0), 0u);
}

TEST(PlayerSpan, EndsWhereSingleStepsEnd)
{
    std::mt19937 random(2);
    for (int round = 0; round < 20000; ++round) {
        const float step = std::ldexp(1 + static_cast<float>(random() % (1 << 23)) / (1 << 23),
                                      static_cast<int>(random() % 20) - 12);
        double position = stepped(0, step, random() % 100) + static_cast<double>(random() % 1000000);
        const UInt32 frames = player::exactFrames(position, step, 1 + random() % 300);
        if (frames == 0) continue;
        ASSERT_EQ(position + frames * static_cast<double>(step), stepped(position, step, frames)) << step;
    }
}

TEST(PlayerSpan, StaysInsideTheBuffer)
{
    std::mt19937 random(3);
    for (int round = 0; round < 200000; ++round) {
        const float step = steps[random() % std::size(steps)];
        const auto count = static_cast<std::int32_t>(random() % 300);
        const UInt32 requested = 1 + random() % 300;
        const player::Span span = {nullptr, stepped(0, step, random() % 300), step, requested};
        const UInt32 inside = player::framesInside(span, count);
        ASSERT_LE(inside, requested);
        if (inside == 0) continue;
        const double last = span.position + (inside - 1) * span.step;
        ASSERT_LT(static_cast<std::int64_t>(last) + 1, count)
            << step << ' ' << span.position << ' ' << inside;
        // framesInside may return one frame fewer than possible, but not two.
        if (inside + 1 < requested)
            ASSERT_GE(static_cast<std::int64_t>(span.position + (inside + 1) * span.step) + 1, count - 0.0);
    }
}

// ---- conversion ----

const std::int32_t bitSizes[] = {7, 8, 15, 16, 24, 31, 32};

/// Return the float for one sample with these bytes, computed in double precision.
float expectedFloat(std::int32_t bitSize, const unsigned char* bytes)
{
    const int count = (bitSize + 7) / 8;
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i)
        value |= static_cast<std::uint64_t>(bytes[bitSize == 24 ? count - 1 - i : i]) << (8 * i);
    const bool isSigned = bitSize % 2 != 0;
    double number = static_cast<double>(value);
    if (isSigned && value >> bitSize) number -= std::ldexp(1.0, bitSize + 1);
    return std::ldexp(static_cast<float>(number), -bitSize);
}

/// Return random bytes. About half of the bytes are values at or next to the ends of a sample's range.
std::vector<unsigned char> bytes(std::mt19937& random, std::size_t count)
{
    static const unsigned char ends[] = {0x00, 0xFF, 0x80, 0x7F, 0x01, 0xFE};
    std::vector<unsigned char> result(count);
    for (auto& each : result)
        each = random() % 2 ? ends[random() % std::size(ends)] : static_cast<unsigned char>(random());
    return result;
}

void expectConverted(std::int32_t bitSize, std::size_t width, player::Conversion convert)
{
    std::mt19937 random(4);
    for (std::size_t count = 0; count <= 70; ++count)
        for (std::size_t misaligned = 0; misaligned < 16; ++misaligned) {
            // The source has no spare byte, so the sanitizers report a read past the end of the source.
            const std::size_t skipped = misaligned % 4, shifted = misaligned / 4;
            const std::vector<unsigned char> source = bytes(random, skipped + count * width);
            std::vector<float> target(shifted + count + 1, 7);
            convert(source.data() + skipped, count, target.data() + shifted);
            for (std::size_t i = 0; i < count; ++i)
                ASSERT_EQ(bitsOf(target[shifted + i]),
                          bitsOf(expectedFloat(bitSize, source.data() + skipped + i * width)))
                    << bitSize << " bits, " << count << " samples, sample " << i;
            ASSERT_EQ(target[shifted + count], 7);
        }
}

TEST(PlayerSimd, ConvertsEverySample)
{
    for (const std::int32_t bitSize : bitSizes) {
        const player::SampleForm& form = *player::findSampleForm(bitSize);
        expectConverted(bitSize, static_cast<std::size_t>(form.bytes), form.conversion);
    }
}

TEST(PlayerSimd, Converts24BitsWithAndWithoutSsse3)
{
    expectConverted(24, 3, player::convertBigEndian24Scalar);
    if (player::hasSsse3()) expectConverted(24, 3, player::convertBigEndian24Ssse3);
}

TEST(PlayerSimd, ConvertsPairsLikeSingleChannels)
{
    std::mt19937 random(5);
    std::vector<std::size_t> counts;
    for (std::size_t count = 0; count <= 70; ++count) counts.push_back(count);
    for (const std::size_t count : {511u, 512u, 513u, 1024u, 1500u}) counts.push_back(count);
    for (const std::int32_t bitSize : bitSizes) {
        const player::SampleForm& form = *player::findSampleForm(bitSize);
        const auto width = static_cast<std::size_t>(form.bytes);
        for (const std::size_t count : counts) {
            const std::vector<unsigned char> left = bytes(random, count * width),
                                             right = bytes(random, count * width);
            std::vector<float> pairs(2 * count + 1, 7), single(count);
            player::convertPairs(form.conversion, width, left.data(), right.data(), count, pairs.data());
            for (std::size_t channel = 0; channel < 2; ++channel) {
                form.conversion((channel ? right : left).data(), count, single.data());
                for (std::size_t i = 0; i < count; ++i)
                    ASSERT_EQ(bitsOf(pairs[2 * i + channel]), bitsOf(single[i]))
                        << bitSize << ' ' << count << ' ' << i;
            }
            ASSERT_EQ(pairs[2 * count], 7);
        }
    }
}

TEST(PlayerSimd, CopiesFloatsBitForBit)
{
    std::mt19937 random(6);
    for (std::size_t count = 0; count <= 70; ++count)
        for (std::size_t misaligned = 0; misaligned < 16; ++misaligned) {
            const std::size_t skipped = misaligned % 4, shifted = misaligned / 4;
            std::vector<unsigned char> left(skipped + 4 * count), right(left);
            Words leftWords(count), rightWords(count);
            for (std::size_t i = 0; i < count; ++i) {
                leftWords[i] = specials[random() % std::size(specials)];
                rightWords[i] = static_cast<std::uint32_t>(random());
            }
            if (count > 0) {
                std::memcpy(left.data() + skipped, leftWords.data(), 4 * count);
                std::memcpy(right.data() + skipped, rightWords.data(), 4 * count);
            }

            Words copy(shifted + count), pairs(shifted + 2 * count);
            player::copyFloats(left.data() + skipped, count, reinterpret_cast<float*>(copy.data() + shifted));
            player::convertPairs(player::copyFloats, 4, left.data() + skipped, right.data() + skipped, count,
                                 reinterpret_cast<float*>(pairs.data() + shifted));
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(copy[shifted + i], leftWords[i]);
                ASSERT_EQ(pairs[shifted + 2 * i], leftWords[i]);
                ASSERT_EQ(pairs[shifted + 2 * i + 1], rightWords[i]);
            }
        }
}

} // namespace
