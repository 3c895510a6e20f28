#include "host/kvx/files/pcm16.h"

#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kvx {
namespace {

TEST(Pcm16, RoundsToTheNearest)
{
    constexpr float bit = 1.0f / 32768;
    const struct {
        float sample;
        int value;
        const char* why;
    } facts[] = {
        {0.0f, 0, "silence"},
        {-0.0f, 0, "silence"},
        {bit, 1, "a PCM16 value is unchanged"},
        {-bit, -1, "a negative PCM16 value is unchanged"},
        {32767 * bit, 32767, "the highest value"},
        {-1.0f, -32768, "the lowest value"},
        {1.0f, 32767, "above the highest value"},
        {-1.0f - bit, -32768, "below the lowest value"},
        {0.49f * bit, 0, "rounded down"},
        {0.51f * bit, 1, "rounded up"},
        {0.5f * bit, 0, "half, rounded to even"},
        {1.5f * bit, 2, "one and a half, rounded to even"},
        {-0.51f * bit, -1, "rounded down, away from 0"},
        {32766.6f * bit, 32767, "rounded up to the highest value"},
        {1e30f, 32767, "far out of range"},
        {-std::numeric_limits<float>::infinity(), -32768, "infinity"},
        {std::nanf(""), 0, "NaN"},
    };
    for (const auto& fact : facts) EXPECT_EQ(toPcm16(fact.sample), fact.value) << fact.why;
}

std::vector<std::int16_t> readAll(const std::string& path, float gain, std::size_t blockFrames)
{
    Pcm16Reader reader(path, gain);
    std::vector<std::int16_t> samples, block(blockFrames * 2);
    for (std::size_t got = blockFrames; got == blockFrames;) {
        got = reader.read(block.data(), blockFrames);
        samples.insert(samples.end(), block.begin(), block.begin() + std::ptrdiff_t(got * 2));
    }
    return samples;
}

TEST(Pcm16, ReadsFilesAsStereo)
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
        for (const std::size_t blockFrames : {1, 2, 100})
            EXPECT_EQ(readAll(folder / "a.wav", fact.gain, blockFrames), fact.read) << blockFrames;
    }
}

} // namespace
} // namespace kvx
