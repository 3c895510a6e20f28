// Tests conversion between fixed rates: quality, time, the amount of input, and resets.
#include "platform/pcm/fixed_rate_converter.h"
#include "tests/support/tone_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using kvxplatform::pcm::FixedRateConverter;
using Quality = FixedRateConverter::Quality;

/// A converter whose input is a sound in memory.
struct Converting {
    Converting(double fromRate, double toRate, UInt32 channelCount, Quality quality = Quality::high)
        : from(fromRate), to(toRate), channels(channelCount)
    {
        EXPECT_TRUE(converter.prepare(from, to, channels, quality));
    }

    /// Convert `frames` frames of output as an audio thread does: first all the input that the converter
    /// requests, then the output. Returns the number of input frames.
    UInt32 slice(UInt32 frames)
    {
        UInt32 pulled = 0;
        for (UInt32 done = 0; done < frames || converter.framesFor(0) > 0;) {
            const FixedRateConverter::Span ready = converter.output();
            const UInt32 count = std::min(ready.frames, frames - done);
            out.insert(out.end(), ready.samples, ready.samples + std::size_t{count} * channels);
            converter.removeOutput(count);
            done += count;
            pulled += add(std::min(converter.framesFor(frames - done), converter.freeInput().frames));
        }
        return pulled;
    }

    UInt32 add(UInt32 frames)
    {
        const FixedRateConverter::Span free = converter.freeInput();
        for (std::size_t i = 0; i < std::size_t{frames} * channels; ++i, ++at)
            free.samples[i] = at < in.size() ? in[at] : 0;
        converter.addInput(frames);
        return frames;
    }

    const double from, to;
    const UInt32 channels;
    FixedRateConverter converter;
    std::vector<float> in, out;
    std::size_t at = 0;
};

constexpr struct {
    double from, to;
} rates[] = {{44100, 48000}, {48000, 44100}, {96000, 44100},  {22050, 48000},
             {44100, 22050}, {48000, 96000}, {44100, 44100.5}};

std::string named(double from, double to) { return std::to_string(from) + " to " + std::to_string(to); }

// The bounds for a sine in 32-bit floats.
TEST(FixedRateConverter, ToneKeepsItsLevelAndGainsNoNoise)
{
    for (const auto& rate : rates)
        for (const Quality quality : {Quality::high, Quality::veryHigh})
            for (const double hertz : {997.0, 0.45 * std::min(rate.from, rate.to)}) {
                SCOPED_TRACE(named(rate.from, rate.to) + ", " + std::to_string(hertz));
                Converting tone(rate.from, rate.to, 2, quality);
                tone.in = support::toneSamples(rate.from, hertz, static_cast<std::size_t>(rate.from), 2);
                while (tone.out.size() < static_cast<std::size_t>(rate.to)) tone.slice(512);
                const support::ToneFit fit =
                    support::fitTone(tone.out, 2, 1, rate.to, hertz, 4000, tone.out.size() / 2);
                EXPECT_NEAR(fit.level, 0, 0.1);
                EXPECT_LT(fit.residue, -110);
            }
}

TEST(FixedRateConverter, FrequenciesAboveTheLowerRateAreRemoved)
{
    for (const Quality quality : {Quality::high, Quality::veryHigh}) {
        Converting tone(48000, 44100, 1, quality);
        tone.in = support::toneSamples(48000, 23000, 48000, 1);
        while (tone.out.size() < 40000) tone.slice(512);
        const support::ToneFit alias = support::fitTone(tone.out, 1, 0, 44100, 44100 - 23000, 4000, 40000);
        EXPECT_LT(alias.level, -100);
        EXPECT_LT(alias.residue, -100);
    }
}

TEST(FixedRateConverter, VeryHighQualityLeavesLessNoise)
{
    double residue[2];
    for (const int isVeryHigh : {0, 1}) {
        Converting tone(44100, 48000, 1, isVeryHigh ? Quality::veryHigh : Quality::high);
        tone.in = support::toneSamples(44100, 997, 44100, 1);
        while (tone.out.size() < 44100) tone.slice(512);
        residue[isVeryHigh] = support::fitTone(tone.out, 1, 0, 48000, 997, 4000, 44100).residue;
    }
    EXPECT_LT(residue[1], residue[0] - 3);
}

TEST(FixedRateConverter, KeepsTheTimeOfATone)
{
    for (const auto& rate : rates) {
        SCOPED_TRACE(named(rate.from, rate.to));
        Converting tone(rate.from, rate.to, 2);
        tone.in = support::toneSamples(rate.from, 500, 50000, 2);
        while (tone.out.size() < 20000) tone.slice(100);
        const std::vector<float> expected = support::toneSamples(rate.to, 500, 10000, 2);
        for (std::size_t i = 4000; i < 20000; ++i) ASSERT_NEAR(tone.out[i], expected[i], 1e-5) << i;
    }
}

TEST(FixedRateConverter, OutputDoesNotDependOnSlices)
{
    const std::vector<float> sound = support::toneSamples(44100, 500, 20000, 2);
    std::vector<float> whole;
    for (const UInt32 slice : {10000u, 1u, 64u, 999u}) {
        Converting tone(44100, 48000, 2);
        tone.in = sound;
        while (tone.out.size() < 20000) tone.slice(slice);
        tone.out.resize(20000);
        if (whole.empty()) whole = tone.out;
        EXPECT_TRUE(tone.out == whole) << slice;
    }
}

// After the first slice, each slice pulls the input that it represents, to within a frame.
TEST(FixedRateConverter, SlicesPullInputEvenly)
{
    for (const auto& rate : rates) {
        SCOPED_TRACE(named(rate.from, rate.to));
        Converting even(rate.from, rate.to, 1);
        std::mt19937 random(1);
        double frames = 1, pulled = even.slice(1);
        for (int i = 0; i < 3000; ++i) {
            const UInt32 slice = 1 + random() % 512;
            frames += slice;
            pulled += even.slice(slice);
            ASSERT_NEAR(pulled, frames * rate.from / rate.to + even.converter.lead(), 1) << i;
        }
    }
}

TEST(FixedRateConverter, LeadIsShortFrom32000Hz)
{
    constexpr double usual[] = {32000, 44100, 48000, 88200, 96000, 176400, 192000};
    for (const double from : usual)
        for (const double to : usual)
            for (const Quality quality : {Quality::high, Quality::veryHigh}) {
                if (from == to) continue;
                EXPECT_LE(Converting(from, to, 1, quality).converter.lead() / from, 0.025)
                    << named(from, to) << ", quality " << static_cast<int>(quality);
            }
}

// A source that supplies more than the converter requests fills the reserve, then has to wait.
TEST(FixedRateConverter, ReserveIsLimited)
{
    Converting tone(44100, 48000, 1);
    tone.in = support::toneSamples(44100, 500, 20000, 1);
    UInt32 added = 0;
    while (const UInt32 free = tone.converter.freeInput().frames) added += tone.add(free);
    EXPECT_GE(added, tone.converter.lead());
    EXPECT_LT(added, 5000u);
    tone.slice(8000);
    const std::vector<float> expected = support::toneSamples(48000, 500, 8000, 1);
    for (std::size_t i = 2000; i < 8000; ++i) ASSERT_NEAR(tone.out[i], expected[i], 1e-5) << i;
}

TEST(FixedRateConverter, ResetStartsANewSound)
{
    // clang-format off
    const struct { double from, to; std::size_t first; double tolerance; const char* why; } facts[] = {
        {44100, 48000, 0, 4e-6, "a period of 147 frames"},
        {96000, 11025, 0, 4e-6, "a period of 1280 frames"},
        {44100, 44100.5, 400, 7.2e-3, "a long period: half a frame of 100 Hz, after the step of its onset"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const std::vector<float> sound = support::toneSamples(fact.from, 100, 200000, 2);
        Converting fresh(fact.from, fact.to, 2);
        fresh.in = sound;
        fresh.slice(2000);
        std::mt19937 random(1);
        Converting reset(fact.from, fact.to, 2);
        reset.in = sound;
        for (int i = 0; i < 20; ++i) {
            for (int slice = 0; slice < i; ++slice) reset.slice(1 + random() % 300);
            reset.converter.reset();
            reset.at = 0;
            reset.out.clear();
            reset.slice(2000);
            for (std::size_t sample = fact.first; sample < fresh.out.size(); ++sample)
                ASSERT_NEAR(reset.out[sample], fresh.out[sample], fact.tolerance) << i << ", " << sample;
        }
    }
}

TEST(FixedRateConverter, ResetOfANewConverterChangesNothing)
{
    Converting reset(44100, 48000, 1), fresh(44100, 48000, 1);
    reset.in = fresh.in = support::toneSamples(44100, 500, 5000, 1);
    reset.converter.reset();
    reset.slice(3000);
    fresh.slice(3000);
    EXPECT_TRUE(reset.out == fresh.out) << "bit for bit";
}

TEST(FixedRateConverter, SamplesThatAreNotFiniteAreSilent)
{
    for (const float sample : {std::nanf(""), std::numeric_limits<float>::infinity()}) {
        Converting silent(44100, 48000, 1);
        silent.in.assign(5000, 0.0f);
        silent.in[1000] = -sample;
        silent.slice(4000);
        EXPECT_TRUE(silent.out == std::vector<float>(4000, 0.0f));
    }
}

TEST(FixedRateConverter, AcceptsRatiosAndChannelCounts)
{
    // clang-format off
    const struct { double from, to; UInt32 channels; bool isAccepted; } facts[] = {
        {1000, 256000, 2, true}, {256000, 1000, 2, true}, {1000, 257000, 2, false}, {257000, 1000, 2, false},
        {44100, 48000, 1, true}, {44100, 48000, 8, true}, {44100, 48000, 128, true}, {44100, 48000, 129, false}, {44100, 48000, 100000, false}, {44100, 48000, 0, false},
    };
    // clang-format on
    for (const auto& fact : facts) {
        FixedRateConverter converter;
        EXPECT_EQ(converter.prepare(fact.from, fact.to, fact.channels, Quality::high), fact.isAccepted)
            << fact.from << ", " << fact.to << ", " << fact.channels;
    }
}

} // namespace
