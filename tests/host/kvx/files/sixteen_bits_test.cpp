#include "host/kvx/files/sixteen_bits.h"

#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kvx {
namespace {

TEST(SixteenBits, AreTheNearest)
{
    constexpr float bit = 1.0f / 32768;
    const struct {
        float sample;
        int value;
        const char* why;
    } facts[] = {
        {0.0f, 0, "silence"},
        {-0.0f, 0, "silence"},
        {bit, 1, "what 16 bits held comes back"},
        {-bit, -1, "likewise"},
        {32767 * bit, 32767, "the greatest"},
        {-1.0f, -32768, "the least"},
        {1.0f, 32767, "cut off"},
        {-1.0f - bit, -32768, "cut off"},
        {0.49f * bit, 0, "down"},
        {0.51f * bit, 1, "up"},
        {0.5f * bit, 0, "in the middle: the even one"},
        {1.5f * bit, 2, "likewise"},
        {-0.51f * bit, -1, "away from 0"},
        {32766.6f * bit, 32767, "up to the greatest"},
        {1e30f, 32767, "far out"},
        {-std::numeric_limits<float>::infinity(), -32768, "farther out"},
        {std::nanf(""), 0, "no number"},
    };
    for (const auto& fact : facts) EXPECT_EQ(toSixteenBits(fact.sample), fact.value) << fact.why;
}

std::vector<std::int16_t> readAll(const std::string& path, float gain, std::size_t piece)
{
    SixteenBitReader reader(path, gain);
    std::vector<std::int16_t> samples, part(piece * 2);
    for (std::size_t got = piece; got == piece;) {
        got = reader.read(part.data(), piece);
        samples.insert(samples.end(), part.begin(), part.begin() + std::ptrdiff_t(got * 2));
    }
    return samples;
}

TEST(SixteenBits, OfAFileAreStereo)
{
    constexpr float bit = 1.0f / 32768;
    const struct {
        int channels;
        float gain;
        std::vector<float> samples;
        std::vector<std::int16_t> read;
    } facts[] = {
        {1, 1, {1, -2, 3}, {1, 1, -2, -2, 3, 3}}, {2, 1, {1, -2, 3, 4}, {1, -2, 3, 4}},
        {3, 1, {1, 2, 9, 3, 4, 9}, {1, 2, 3, 4}}, {2, 0.5f, {100, -200}, {50, -100}},
        {2, 2, {20000, -20000}, {32767, -32768}},
    };
    const support::TemporaryFolder folder;
    for (const auto& fact : facts) {
        support::Sound sound{44100, fact.channels, fact.samples};
        for (float& sample : sound.samples) sample *= bit;
        support::writeSound(sound, folder / "a.wav");
        for (const std::size_t piece : {1, 2, 100})
            EXPECT_EQ(readAll(folder / "a.wav", fact.gain, piece), fact.read) << piece;
    }
}

} // namespace
} // namespace kvx
