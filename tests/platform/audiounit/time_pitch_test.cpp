// Tests the rate units' output: duration, pitch, level, position, latency and tail.
#include "tests/platform/audiounit/rate_unit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace test;

constexpr double sampleRate = 44100, hertz = 440;
constexpr std::size_t second = 44100;

double pitchOf(double cents) { return std::exp2(cents / 1200); }

// clang-format off
const struct { Rates rates; const char* why; } settings[] = {
    {{'nutp', 1.25},           "a little faster"},
    {{'nutp', 0.8},            "a little slower"},
    {{'nutp', 0.5},            "half as fast"},
    {{'nutp', 2},              "twice as fast"},
    {{'nutp', 1, 1200},        "an octave higher"},
    {{'nutp', 1, -1200},       "an octave lower"},
    {{'nutp', 1, 300},         "a third higher"},
    {{'nutp', 1.25, -700},     "faster and lower"},
    {{'nutp', 1.25, 0, 7.9},   "with the faster engine"},
    {{'nutp', 0.5, 0, 3},      "with the faster engine, half as fast"},
    {{'nutp', 2, 0, 3},        "with the faster engine, twice as fast"},
    {{'nutp', 1, 1200, 3},     "with the faster engine, an octave higher"},
    {{'nutp', 1, -1200, 3},    "with the faster engine, an octave lower"},
    {{'tmpt', 0.75, 100},      "the classic unit"},
    {{'vari', 1.25},           "varispeed"},
    {{'vari', 0.5},            "varispeed, an octave lower"},
    {{'vari', 2},              "varispeed, an octave higher"},
    {{'vari', 4},              "varispeed, two octaves higher"},
};
// clang-format on

bool isVarispeed(const Rates& rates) { return rates.subType == 'vari'; }

// The frequency is exact within 0.5 %, the duration within 1 %.
TEST(TimePitch, HasTheRateAndPitchThatAreSet)
{
    for (const auto& setting : settings) {
        SCOPED_TRACE(setting.why);
        const Rates& rates = setting.rates;
        const double frames = second / rates.rate;
        RateUnit player(rates, tone(1, second, hertz, sampleRate, 0.5));
        player.play(static_cast<std::size_t>(frames) + second / 2);
        const double expected = hertz * pitchOf(rates.cents) * (isVarispeed(rates) ? rates.rate : 1);
        EXPECT_NEAR(frequencyOf(player.output[0], 3000, static_cast<std::size_t>(frames) - 3000, sampleRate),
                    expected, expected * 0.005);
        EXPECT_NEAR(static_cast<double>(endOf(player.output[0], 0.1)), frames, frames * 0.01);
        const double energy = 0.125 * frames;
        EXPECT_NEAR(energyOf(player.output[0]), energy, energy * 0.05) << "nothing is lost";
    }
}

// Output frame n corresponds to input frame n * rate, from the first frame on.
TEST(TimePitch, KeepsPositionsFromTheFirstFrameOn)
{
    for (const auto& setting : settings) {
        SCOPED_TRACE(setting.why);
        const Rates& rates = setting.rates;
        const bool isExact = isVarispeed(rates);
        for (const std::size_t at : {std::size_t{2000}, second}) {
            Sound click = silence(1, second + 10000);
            click[0][at] = 1;
            RateUnit player(rates, click);
            const double expected = static_cast<double>(at) / rates.rate;
            player.play(static_cast<std::size_t>(expected) + second / 4);
            EXPECT_NEAR(energyCentreOf(player.output[0]), expected, isExact ? 1 : 512) << at;
        }
        RateUnit player(rates, tone(1, second, hertz, sampleRate, 0.5));
        player.play(2048);
        const double start = energyOf(player.output[0]) / 2048 / 0.125;
        EXPECT_GT(start, isExact ? 0.99 : 0.5) << "audible from the first frame on";
    }
}

// After the source's last frame has been pulled, the output ends within the latency and tail that the unit
// reports, and not long before.
TEST(TimePitch, EndsAfterItsLatencyAndTail)
{
    struct Counting {
        Track& track;
        double pulled = 0;
        static OSStatus callback(void* context, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                                 UInt32 bus, UInt32 frames, AudioBufferList* list)
        {
            auto& self = *static_cast<Counting*>(context);
            self.pulled = time->mSampleTime + frames;
            return Track::callback(&self.track, flags, time, bus, frames, list);
        }
    };
    for (const auto& setting : settings) {
        SCOPED_TRACE(setting.why);
        RateUnit player(setting.rates, tone(1, second / 2, hertz, sampleRate, 0.5));
        Counting counting{player.track};
        EXPECT_EQ(player.unit.setCallback(Counting::callback, &counting), noErr);
        const double before = player.seconds(12);
        while (counting.pulled < second / 2) player.play(64, 64);
        const double latency = player.seconds(12), tail = player.seconds(20);
        EXPECT_GT(before, 0.95 * latency) << "known before the first slice";
        EXPECT_LT(before, 1.3 * latency);
        const double lastFrame = static_cast<double>(player.output[0].size()) + latency * sampleRate;
        EXPECT_NEAR(lastFrame, counting.pulled / setting.rates.rate, 64) << "where the last frame is output";
        EXPECT_LT(tail, 0.15);
        player.play(second / 2);
        const auto end = static_cast<double>(endOf(player.output[0], 0.0005));
        EXPECT_LE(end, lastFrame + tail * sampleRate);
        EXPECT_GT(end, lastFrame - 600) << "at most a block was pulled too early";
    }
}

TEST(TimePitch, ChangesNoBitWhenNeutralOrBypassed)
{
    const Sound sound = anyBits(2, 6000);
    for (const OSType kind : {'nutp', 'tmpt', 'vari'})
        for (const bool isBypassed : {false, true})
            for (const UInt32 slice : {1u, 7u, 512u, 1156u}) {
                RateUnit player({kind, isBypassed ? 1.25 : 1.0}, sound);
                player.bypass(isBypassed);
                player.play(4624, slice);
                for (int c = 0; c < 2; ++c)
                    EXPECT_TRUE(sameBits(player.output[c], {sound[c].begin(), sound[c].begin() + 4624}))
                        << slice << ", bypassed: " << isBypassed;
                EXPECT_EQ(player.seconds(12), 0) << "no latency";
                EXPECT_EQ(player.seconds(20), 0) << "no tail";
            }
}

TEST(TimePitch, DoesNotDependOnTheSliceSize)
{
    for (const Rates& rates : {Rates{'nutp', 1.25, 300}, Rates{'nutp', 0.8, 0, 4}, Rates{'vari', 1.25}}) {
        const Sound sound = whiteNoise(2, 30000);
        std::vector<Float32> first;
        for (const UInt32 slice : {512u, 7u, 1156u}) {
            RateUnit player(rates, sound);
            player.play(8092, slice);
            if (first.empty()) first = player.output[0];
            EXPECT_TRUE(sameBits(player.output[0], first)) << slice;
        }
    }
}

TEST(TimePitch, KeepsChannelsInPhase)
{
    for (const auto& rates : {Rates{'nutp', 0.8}, Rates{'nutp', 1.25, 300, 4}, Rates{'vari', 0.8}})
        for (const UInt32 channels : {1u, 2u, 6u}) {
            Sound sound = whiteNoise(1, 20000);
            sound.resize(channels, sound[0]);
            for (UInt32 c = 1; c < channels; ++c)
                for (Float32& sample : sound[c]) sample *= c % 2 ? 0.5f : 1;
            RateUnit player(rates, sound);
            player.play(12000);
            double worst = 0;
            for (UInt32 c = 1; c < channels; ++c)
                for (std::size_t i = 0; i < 12000; ++i)
                    worst = std::max(worst,
                                     std::fabs(static_cast<double>(player.output[c][i]) -
                                               static_cast<double>(player.output[0][i]) * (c % 2 ? 0.5 : 1)));
            EXPECT_LT(worst, 1e-4) << channels;
        }
}

TEST(TimePitch, PullsInOrderAndWithinTheLimit)
{
    // clang-format off
    const struct { Rates rates; UInt32 limit; } facts[] = {
        {{'nutp', 2},          256}, {{'nutp', 32},          1156}, {{'nutp', 0.5, 300}, 64}, {{'nutp', 1.25, 0, 4}, 1},
        {{'vari', 4},          512}, {{'vari', 0.25},        100},  {{'tmpt', 1},        300},
    };
    // clang-format on
    struct Pulls {
        Float64 next = 5000;
        UInt32 most = 0;
        bool isInOrder = true;
        static OSStatus callback(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp* time,
                                 UInt32, UInt32 frames, AudioBufferList*)
        {
            auto& self = *static_cast<Pulls*>(context);
            self.isInOrder = self.isInOrder && time->mSampleTime == self.next;
            self.next += frames;
            self.most = std::max(self.most, frames);
            return noErr;
        }
    };
    for (const auto& fact : facts) {
        RateUnit player(fact.rates, silence(2, 10), sampleRate, fact.limit);
        Pulls pulls;
        EXPECT_EQ(player.unit.setCallback(Pulls::callback, &pulls), noErr);
        player.rendering.at = 5000;
        for (int i = 0; i < 20; ++i) EXPECT_EQ(player.rendering.slice(fact.limit), noErr);
        EXPECT_TRUE(pulls.isInOrder) << "from the first slice's time on";
        EXPECT_LE(pulls.most, fact.limit);
        EXPECT_GE(pulls.next - 5000, 20 * fact.limit * fact.rates.rate - 1);
        if (fact.rates.rate == 1) EXPECT_EQ(pulls.next, 5000 + 20 * fact.limit);
    }
}

TEST(TimePitch, RendersSoundAtTheExtremes)
{
    // clang-format off
    const struct { Rates rates; double sampleRate; UInt32 channels; } facts[] = {
        {{'nutp', 1.0 / 32, 0},      44100, 2}, {{'nutp', 32, 0},       44100, 2}, {{'nutp', 1.0 / 32, 2400}, 44100, 2}, {{'nutp', 32, -2400},     44100, 2},
        {{'nutp', 1.0 / 32, -2400},  44100, 1}, {{'nutp', 32, 2400},    44100, 1}, {{'nutp', 1.0 / 32, 2400, 3}, 44100, 2}, {{'nutp', 32, -2400, 3}, 44100, 2},
        {{'tmpt', 32, -2400},        44100, 1}, {{'nutp', 1.25, 300},   1,     1}, {{'nutp', 1.25, 300},      8000,  2}, {{'nutp', 1.25, 300},     192000, 1},
        {{'nutp', 1.25, 300, 3},     1e6,   1}, {{'nutp', 0.5, 0, 3},   44100, 64}, {{'vari', 0.25},          44100, 64}, {{'vari', 4},             1,     1},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(::testing::Message()
                     << fact.rates.rate << ", " << fact.rates.cents << ", " << fact.sampleRate);
        RateUnit player(fact.rates, tone(fact.channels, 60000, fact.sampleRate / 50, fact.sampleRate, 0.5),
                        fact.sampleRate);
        player.play(2048);
        bool isSound = true;
        for (const Float32 sample : player.output[0]) isSound = isSound && std::fabs(sample) < 4;
        EXPECT_TRUE(isSound);
        EXPECT_GT(energyOf(player.output[0]), 0);
    }
}

// NaN, infinite and huge samples disturb the output for a moment only.
TEST(TimePitch, RecoversFromInvalidSamples)
{
    for (const Rates& rates : {Rates{'nutp', 1.25, 300}, Rates{'nutp', 1.25, 0, 4}, Rates{'vari', 1.25}})
        for (const Float32 bad :
             {std::numeric_limits<Float32>::quiet_NaN(), std::numeric_limits<Float32>::infinity(),
              std::numeric_limits<Float32>::max()}) {
            Sound sound = tone(1, 30000, hertz, sampleRate, 0.5);
            for (std::size_t i = 5000; i < 5100; ++i) sound[0][i] = bad;
            RateUnit player(rates, sound);
            player.play(20000);
            EXPECT_GT(minPeak(player.output[0], 12000, 20000, 250), 0.3) << bad;
            EXPECT_LT(maxSecondDifference(player.output[0], 12000, 20000), 0.1) << bad;
        }
}

// After a reset, the unit starts anew at the next input frame.
TEST(TimePitch, ResetForgetsThePast)
{
    for (const Rates& rates : {Rates{'nutp', 0.8}, Rates{'nutp', 1.25, 300, 4}, Rates{'vari', 1.25}}) {
        RateUnit player(rates, tone(1, 60000, hertz, sampleRate, 0.5));
        player.play(8192);
        const auto first = player.output[0];
        EXPECT_EQ(AudioUnitReset(player.unit, 0, 0), noErr);
        EXPECT_EQ(player.get(0), static_cast<Float32>(rates.rate)) << "settings stay";
        player.output[0].clear();
        player.rendering.at = 0;
        player.play(8192);
        double worst = 0;
        for (std::size_t i = 0; i < 8192; ++i)
            worst = std::max(
                worst, std::fabs(static_cast<double>(player.output[0][i]) - static_cast<double>(first[i])));
        EXPECT_LT(worst, 0.1) << "the finer engine keeps its analysis of the former sound for a moment";

        player.track.sound = silence(1, 60000);
        EXPECT_EQ(AudioUnitReset(player.unit, 0, 0), noErr);
        player.output[0].clear();
        player.play(8192);
        EXPECT_EQ(energyOf(player.output[0]), 0) << "no former input is output";
    }
}

TEST(TimePitch, RendersTheSameAfterInitialisingAgain)
{
    for (const Rates& rates : {Rates{'nutp', 0.8}, Rates{'vari', 1.25}}) {
        RateUnit player(rates, tone(2, 60000, hertz, sampleRate, 0.5));
        player.play(8192);
        const auto first = player.output[0];
        EXPECT_EQ(AudioUnitUninitialize(player.unit), noErr);
        EXPECT_EQ(player.seconds(12), 0);
        EXPECT_EQ(AudioUnitInitialize(player.unit), noErr);
        player.output = Sound(2);
        player.rendering.at = 0;
        player.play(8192);
        EXPECT_TRUE(sameBits(player.output[0], first)) << "bit for bit";
    }
}

} // namespace
