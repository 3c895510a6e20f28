// Tests that changes of a rate unit's settings during rendering make no click and lose no input.
#include "tests/platform/audiounit/rate_unit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <utility>

namespace {

using namespace test;

constexpr double sampleRate = 44100, hertz = 440, amplitude = 0.5;

// Longest duration of a change in frames: an engine starts ahead of the output, and a crossfade follows.
constexpr std::size_t changeFrames = 16000;

// clang-format off
const struct { OSType subType; double overlap; double rate, cents; const char* why; } changes[] = {
    {'nutp', 8, 1.25, 0,     "a little faster"},
    {'nutp', 8, 0.5,  0,     "half as fast"},
    {'nutp', 8, 2,    0,     "twice as fast"},
    {'nutp', 8, 1,    300,   "higher"},
    {'nutp', 8, 1.25, -500,  "faster and lower"},
    {'nutp', 4, 1.25, 0,     "with the faster engine"},
    {'nutp', 4, 1,    -300,  "with the faster engine, lower"},
    {'tmpt', 8, 0.8,  0,     "the classic unit"},
    {'vari', 8, 1.25, 0,     "varispeed"},
    {'vari', 8, 0.5,  0,     "varispeed, lower"},
};
// clang-format on

void set(RateUnit& player, double rate, double cents, bool isVarispeed)
{
    player.set(0, rate);
    if (!isVarispeed) player.set(1, cents);
}

// Each change leads from the neutral setting to another setting and back.
TEST(RateChange, MakesNoClickAndNoGap)
{
    for (const auto& change : changes) {
        SCOPED_TRACE(change.why);
        const bool isVarispeed = change.subType == 'vari';
        const double highest =
            hertz * std::max(1.0, isVarispeed ? change.rate : std::exp2(change.cents / 1200));
        for (const bool byBypass : {false, true}) {
            RateUnit player({change.subType, 1, 0, change.overlap},
                            tone(2, 400000, hertz, sampleRate, amplitude));
            if (byBypass) {
                player.bypass(true);
                set(player, change.rate, change.cents, isVarispeed);
            }
            player.play(5000);
            if (byBypass)
                player.bypass(false);
            else
                set(player, change.rate, change.cents, isVarispeed);
            player.play(changeFrames + 10000);
            const double expected = hertz * (isVarispeed ? change.rate : std::exp2(change.cents / 1200));
            EXPECT_NEAR(frequencyOf(player.output[0], 5000 + changeFrames, 15000 + changeFrames, sampleRate),
                        expected, expected * 0.005);
            EXPECT_GT(player.seconds(12), 0);
            if (byBypass)
                player.bypass(true);
            else
                set(player, 1, 0, isVarispeed);
            player.play(changeFrames + 10000);

            const auto& output = player.output[0];
            EXPECT_LT(maxSecondDifference(output, 0, output.size()),
                      1.25 * secondDifferenceOfTone(highest, sampleRate, amplitude));
            EXPECT_GT(minPeak(output, 0, output.size(), 250), 0.8 * amplitude);
            EXPECT_EQ(player.seconds(12), 0) << "the input that was pulled ahead has been rendered";
        }
    }
}

// The input is noise, because in noise every position of the input can be recognised.
TEST(RateChange, BackToNeutralContinuesTheInputBitForBit)
{
    for (const auto& change : changes) {
        SCOPED_TRACE(change.why);
        RateUnit player({change.subType, 1, 0, change.overlap}, whiteNoise(2, 400000));
        player.play(5000);
        set(player, change.rate, change.cents, change.subType == 'vari');
        player.play(30000);
        set(player, 1, 0, change.subType == 'vari');
        player.play(30000);
        const auto& output = player.output[0];
        const auto& sound = player.track.sound[0];
        EXPECT_TRUE(sameBits({output.begin(), output.begin() + 5000}, {sound.begin(), sound.begin() + 5000}));
        const auto at = findInNoise(&output[50000], sound);
        ASSERT_TRUE(at);
        EXPECT_TRUE(sameBits({output.begin() + 50000, output.end()},
                             {sound.begin() + static_cast<std::ptrdiff_t>(*at),
                              sound.begin() + static_cast<std::ptrdiff_t>(*at + output.size() - 50000)}))
            << "bit for bit";
        const double played = 20000 + 30000 * change.rate;
        EXPECT_NEAR(static_cast<double>(*at), played, 10000 * std::fabs(change.rate - 1) + 400);
    }
}

// At some extreme settings, the engine pulls more frames ahead than the history can hold.
TEST(RateChange, BackToNeutralWorksFromTheExtremes)
{
    for (const auto& [rate, cents] :
         {std::pair{32.0, 0.0}, {32.0, -2400.0}, {1.0 / 32, 2400.0}, {1.0 / 32, -2400.0}})
        for (const double overlap : {8.0, 3.0}) {
            SCOPED_TRACE(::testing::Message() << rate << ", " << cents << ", " << overlap);
            RateUnit player({'nutp', rate, cents, overlap}, whiteNoise(1, 1500000));
            player.play(3000);
            set(player, 1, 0, false);
            player.play(20000);
            const auto& output = player.output[0];
            EXPECT_TRUE(findInNoise(&output[output.size() - 4], player.track.sound[0]))
                << "the input, bit for bit";
            EXPECT_EQ(player.seconds(12), 0);
        }
}

TEST(RateChange, GlidesBetweenSettings)
{
    // clang-format off
    const struct { OSType subType; double rate; AudioUnitParameterID id; double from, to, peak; const char* why; } facts[] = {
        {'nutp', 1,   0, 0.8, 1.25, 0.7, "the rate"},
        {'nutp', 0.8, 1, 0,   300,  0.7, "the pitch, the first time, at another rate"},
        {'nutp', 1,   1, 300, -300, 0.7, "the pitch again"},
        {'nutp', 0.8, 4, 8,   4,    0.4, "the engine: a crossfade between two that differ in phase"},
        {'nutp', 0.8, 4, 4,   8,    0.4, "the engine, back"},
        {'vari', 0.8, 0, 0.8, 1.25, 0.9, "the speed"},
        {'vari', 1,   1, 300, -300, 0.9, "the speed in cents"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        RateUnit player({fact.subType, fact.rate}, tone(1, 400000, hertz, sampleRate, amplitude));
        player.set(fact.id, fact.from);
        player.play(20000);
        player.set(fact.id, fact.to);
        player.play(40000);
        const auto& output = player.output[0];
        const double up = std::exp2(0.25) * (fact.subType == 'vari' ? 1.25 : 1);
        EXPECT_LT(maxSecondDifference(output, 2000, output.size()),
                  1.3 * secondDifferenceOfTone(hertz * up, sampleRate, amplitude));
        EXPECT_GT(minPeak(output, 12000, output.size(), 250), fact.peak * amplitude);
    }
}

// A further change may arrive before the previous change is complete.
TEST(RateChange, MayBeRevertedAtAnyTime)
{
    for (const OSType kind : {'nutp', 'vari'})
        for (const std::size_t pause : {1u, 600u, 3000u, 4500u, 5200u, 9000u}) {
            RateUnit player({kind}, tone(1, 400000, hertz, sampleRate, amplitude));
            player.play(3000);
            for (int i = 0; i < 4; ++i) {
                player.set(0, i % 2 ? 1 : 1.25);
                player.play(pause, 100);
            }
            player.play(25000);
            const auto& output = player.output[0];
            EXPECT_LT(maxSecondDifference(output, 0, output.size()),
                      2 * secondDifferenceOfTone(hertz, sampleRate, amplitude))
                << pause;
            EXPECT_GT(minPeak(output, 0, output.size(), 250), 0.7 * amplitude) << pause;
            EXPECT_EQ(player.seconds(12), 0);
        }
}

// Inside its own slice a unit makes no engine, so the setting takes effect after another thread has made one.
TEST(RateChange, InsideASliceWaitsForAnEngine)
{
    RateUnit player({'nutp'}, tone(1, 400000, hertz, sampleRate, amplitude));
    const auto setInside = [](void* context, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                              UInt32 bus, UInt32 frames, AudioBufferList* list) -> OSStatus {
        RateUnit& self = *static_cast<RateUnit*>(context);
        EXPECT_EQ(AudioUnitSetParameter(self.unit, 1, 0, 0, 1200, 0), noErr);
        return Track::callback(&self.track, flags, time, bus, frames, list);
    };
    EXPECT_EQ(player.unit.setCallback(setInside, &player), noErr);
    player.play(20000);
    EXPECT_NEAR(frequencyOf(player.output[0], 10000, 20000, sampleRate), hertz, 1);
    player.set(4, 8);
    player.play(30000);
    EXPECT_NEAR(frequencyOf(player.output[0], 40000, 50000, sampleRate), 2 * hertz, 5);
}

TEST(RateChange, FromAnotherThreadKeepsTheOutputInRange)
{
    for (const OSType kind : {'nutp', 'vari'}) {
        RateUnit player({kind}, tone(2, 4000000, hertz, sampleRate, amplitude));
        std::atomic<bool> isOver{false};
        std::thread setter([&] {
            for (int i = 0; i < 60; ++i) {
                player.set(0, 0.5 + 0.03 * i);
                player.set(1, i % 3 ? 100 * (i % 5) : 0);
                if (kind == 'nutp') player.set(4, i % 4 ? 8 : 3);
                if (i % 5 == 0) player.bypass(i % 2);
                if (i % 16 == 0) EXPECT_EQ(AudioUnitReset(player.unit, 0, 0), noErr);
                player.seconds(12);
                player.seconds(20);
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            isOver = true;
        });
        while (!isOver) player.play(512);
        setter.join();
        bool isSound = true;
        for (const Float32 sample : player.output[0]) isSound = isSound && std::fabs(sample) < 2;
        EXPECT_TRUE(isSound);
    }
}

} // namespace
