// Tests how the time-pitch units' settings of quality change the sound: chords, attacks, notes.
#include "tests/platform/audiounit/rate_unit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

using namespace test;

constexpr double sampleRate = 44100;

struct Quality {
    OSType subType = 'nutp';
    double overlap = 8;
    UInt32 quality = 127;
};

constexpr Quality best, cheapest = {'nutp', 3, 0};

std::vector<Float32> render(const Quality& quality, double rate, const Sound& sound, std::size_t frames)
{
    RateUnit player({quality.subType, rate, 0, quality.overlap}, sound);
    EXPECT_EQ(player.unit.set<UInt32>(kAudioUnitProperty_RenderQuality, 0, 0, quality.quality), noErr);
    player.play(frames);
    return player.output[0];
}

/// Returns  the mean amplitude of a note in spans of 0.2 s.
double meanAmplitude(const std::vector<Float32>& samples, double hertz)
{
    constexpr std::size_t first = 10000, span = 8820, spans = 10;
    double sum = 0;
    for (std::size_t i = 0; i < spans; ++i)
        sum += amplitudeAt(samples, first + i * span, first + (i + 1) * span, hertz, sampleRate);
    return sum / spans;
}

TEST(TimePitchQuality, DependsOnOverlapAndRenderQuality)
{
    // clang-format off
    const struct { Quality quality; bool isBest; const char* why; } facts[] = {
        {{},                true,  "the default"},
        {{'nutp', 32, 127}, true,  "the most of both"},
        {{'nutp', 8,  96},  true,  "the least values of the best quality"},
        {{'nutp', 8,  95},  false, "a lower render quality"},
        {{'nutp', 7.9, 127}, false, "a lower overlap"},
        {{'nutp', 32, 0},   false, "the most overlap at the least render quality"},
        {{'tmpt', 0, 127},  true,  "the classic unit at its default"},
        {{'tmpt', 0, 95},   false, "the classic unit at a lower render quality"},
    };
    // clang-format on
    const Sound sound = whiteNoise(1, 12000);
    const auto asBest = render(best, 1.25, sound, 6000), asCheapest = render(cheapest, 1.25, sound, 6000);
    EXPECT_FALSE(sameBits(asBest, asCheapest));
    for (const auto& fact : facts) {
        const auto output = render(fact.quality, 1.25, sound, 6000);
        EXPECT_EQ(sameBits(output, asBest), fact.isBest) << fact.why;
        EXPECT_EQ(sameBits(output, asCheapest), !fact.isBest) << fact.why;
    }
}

TEST(TimePitchQuality, DefaultKeepsTheNotesOfACloseChord)
{
    constexpr double notes[] = {132, 165, 198}, amplitude = 0.25;
    Sound chord = silence(1, 150000);
    for (const double hertz : notes) {
        const Sound note = tone(1, chord[0].size(), hertz, sampleRate, amplitude);
        std::transform(chord[0].begin(), chord[0].end(), note[0].begin(), chord[0].begin(), std::plus<>());
    }
    for (const double rate : {1.25, 0.8}) {
        const auto asBest = render(best, rate, chord, 100000),
                   asCheapest = render(cheapest, rate, chord, 100000);
        for (const double hertz : notes) {
            SCOPED_TRACE(testing::Message() << hertz << " Hz at " << rate);
            EXPECT_NEAR(decibels(meanAmplitude(asBest, hertz) / amplitude), 0, 1.5);
            EXPECT_LT(decibels(meanAmplitude(asCheapest, hertz) / amplitude), -2)
                << "its energy is beside the note";
        }
    }
}

TEST(TimePitchQuality, DefaultKeepsAttacks)
{
    constexpr std::size_t attack = 50000, expected = 40000, before = 88; // 88 frames: 2 ms
    Sound hit = whiteNoise(1, 60000);
    std::fill_n(hit[0].begin(), attack, 0.0f);
    const auto preEcho = [&](const Quality& quality) {
        const auto output = render(quality, 1.25, hit, 48000);
        return energyOf({output.begin(), output.begin() + (expected - before)});
    };
    EXPECT_LT(preEcho(best), 0.1 * preEcho(cheapest));
}

TEST(TimePitchQuality, CheapestKeepsANote)
{
    const Sound note = tone(1, 150000, 440, sampleRate, 0.5);
    for (const double rate : {1.25, 0.8})
        EXPECT_NEAR(decibels(meanAmplitude(render(cheapest, rate, note, 100000), 440) / 0.5), 0, 0.1) << rate;
}

} // namespace
