// Rounding of samples to integers: exact samples, clipping, dither.
#include "host/kvx/files/quantizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using kvx::Quantizer;

std::vector<std::int32_t> rounded(Quantizer quantizer, const std::vector<float>& samples)
{
    std::vector<std::int32_t> out(samples.size());
    quantizer.round(samples.data(), samples.size(), out.data());
    return out;
}

TEST(Quantizer, RoundsAndClips)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float step16 = 1.0f / 32768;
    const struct {
        int bits;
        float sample;
        std::int32_t result;
        const char* why;
    } facts[] = {
        {16, 0.0f, 0, "silence"},
        {16, -0.0f, 0, "negative zero"},
        {16, step16, 1 << 16, "the least step"},
        {16, -step16, -(1 << 16), "the least negative step"},
        {16, 0.49f * step16, 0, "to the nearest"},
        {16, 0.51f * step16, 1 << 16, "to the nearest"},
        {16, 0.5f * step16, 0, "ties to even"},
        {16, 1.5f * step16, 2 << 16, "ties to even"},
        {16, 32767 * step16, 32767 << 16, "the highest sample"},
        {16, 1.0f, 32767 << 16, "full scale is clipped"},
        {16, -1.0f, -32768 * 65536, "the lowest sample"},
        {16, 3.0f, 32767 << 16, "above full scale"},
        {16, -3.0f, -32768 * 65536, "below full scale"},
        {16, infinity, 32767 << 16, "infinity"},
        {16, -infinity, -32768 * 65536, "infinity"},
        {16, std::nanf(""), 0, "not a number"},
        {24, 1.0f, 0x7FFFFF00, "full scale is clipped"},
        {24, 1.0f / (1 << 23), 256, "the least step"},
        {32, 1.0f, 0x7FFFFFFF, "full scale is clipped"},
        {32, -1.0f, std::numeric_limits<std::int32_t>::min(), "the lowest sample"},
        {32, std::ldexp(1.0f, -31), 1, "the least step"},
        {32, 1e30f, 0x7FFFFFFF, "far above full scale"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_EQ(rounded({fact.bits, false}, {fact.sample})[0], fact.result) << fact.sample;
    }
}

TEST(Quantizer, DitherKeepsExactSamples)
{
    for (const int bits : {16, 24, 32}) {
        std::vector<float> samples = {2.0f, -2.0f, std::nanf("")};
        for (int i = -1000; i < 1000; ++i) samples.push_back(std::ldexp(static_cast<float>(i * 7), 1 - bits));
        EXPECT_EQ(rounded({bits, true}, samples), rounded({bits, false}, samples)) << bits;
    }
}

TEST(Quantizer, DitherPreservesTheMeanOfASmallSample)
{
    constexpr std::size_t count = 200000;
    constexpr double step = 65536;
    const std::vector<float> samples(count, 0.3f / 32768);
    for (const std::int32_t sample : rounded({16, false}, samples)) ASSERT_EQ(sample, 0);
    double sum = 0, squares = 0, greatest = 0;
    for (const std::int32_t sample : rounded({16, true}, samples)) {
        const double error = sample / step - 0.3;
        sum += error;
        squares += error * error;
        greatest = std::max(greatest, std::fabs(error));
    }
    EXPECT_NEAR(sum / count, 0, 0.01);
    EXPECT_NEAR(squares / count, 0.25, 0.01) << "the power of the error does not depend on the sample";
    EXPECT_LE(greatest, 1.5);
}

TEST(Quantizer, DitherIsTheSameEachTimeAndStartsAtTheFirstInexactSample)
{
    std::vector<float> samples(1000, 0.25f);
    samples.insert(samples.end(), 1000, 1e-6f);
    samples.insert(samples.end(), 1000, 0.25f);
    const auto out = rounded({16, true}, samples);
    EXPECT_EQ(out, rounded({16, true}, samples));
    EXPECT_EQ(std::count(out.begin(), out.begin() + 1000, 8192 << 16), 1000);
    EXPECT_LT(std::count(out.begin() + 2000, out.end(), 8192 << 16), 900);
}

} // namespace
