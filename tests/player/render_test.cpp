// Rendering: the output is compared with values that were computed by hand.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/device_spy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using test::PlayerObject;
using test::render;
using Floats = std::vector<float>;

class PlayerRender : public test::FreshPlatform {
protected:
    /// Set the sample rate and the channel count of the data and start the player. The device runs at 44100
    /// Hz.
    static void start(const PlayerObject& object, float rate, std::int32_t channels = 1)
    {
        object->sampleRate = rate;
        object->numberOfChannels = channels;
        ASSERT_TRUE(object.start());
    }

    static void setDeviceRate(double rate) { device_spy::platform().streamFormat.mSampleRate = rate; }
};

constexpr float half = 22050.0f, equal = 44100.0f, twice = 88200.0f, fourTimes = 176400.0f;

TEST_F(PlayerRender, EqualRateReproducesTheInputOnEveryChannel)
{
    const Floats input = {0.1f, -0.2f, 0.3f, 1.5f, -2.5f, 1e-30f, 0.7f, 0.8f};
    for (const std::uint32_t channels : {1u, 2u, 6u}) {
        const PlayerObject object;
        ASSERT_TRUE(object.add(input));
        start(object, equal);
        test::Slice slice({test::layout(channels, 8), test::layout(1, 8)});
        EXPECT_EQ(test::runCycle(object, slice), 0);
        Floats expected;
        for (const float sample : input) expected.insert(expected.end(), channels, sample);
        EXPECT_EQ(slice.floats(0), expected);
        EXPECT_EQ(slice.floats(1), input);
        EXPECT_EQ(object->outputPosition, 8.0);
    }
}

TEST_F(PlayerRender, EqualRateReproducesStereo)
{
    const Floats input = {1, -1, 2, -2, 3, -3, 4, -4};
    const PlayerObject object;
    ASSERT_TRUE(object.add(input));
    start(object, equal, 2);
    EXPECT_EQ(render(object, 4, 2), input);
    EXPECT_EQ(object->outputPosition, 4.0) << "positions count frames, not samples";
}

TEST_F(PlayerRender, EqualRateLosesNoSampleBetweenBuffers)
{
    for (const std::uint32_t sliceFrames : {1u, 2u, 3u, 4u, 5u, 7u, 12u}) {
        SCOPED_TRACE(sliceFrames);
        const PlayerObject object;
        ASSERT_TRUE(object.add({1, 2, 3, 4}));
        ASSERT_TRUE(object.add({5}));
        ASSERT_TRUE(object.add({6, 7, 8, 9, 10, 11, 12}));
        start(object, equal);
        Floats rendered;
        while (rendered.size() < 12) {
            const Floats slice = render(object, sliceFrames);
            rendered.insert(rendered.end(), slice.begin(), slice.end());
        }
        rendered.resize(12);
        EXPECT_EQ(rendered, (Floats{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    }
}

TEST_F(PlayerRender, HalfTheDeviceRateInsertsMidpoints)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 4, 0}));
    start(object, half);
    EXPECT_EQ(render(object, 8), (Floats{1, 1.5, 2, 3, 4, 2, 0, 0}))
        << "the last sample is interpolated to silence";
    EXPECT_EQ(object->outputPosition, 4.0);
}

TEST_F(PlayerRender, HalfTheDeviceRateInsertsMidpointsInStereo)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, -1, 2, -2, 4, -4}));
    start(object, half, 2);
    EXPECT_EQ(render(object, 6, 2), (Floats{1, -1, 1.5, -1.5, 2, -2, 3, -3, 4, -4, 2, -2}));
}

TEST_F(PlayerRender, TwiceTheDeviceRateTakesEverySecondSample)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6}));
    start(object, twice);
    EXPECT_EQ(render(object, 3), (Floats{1, 3, 5}));
    EXPECT_EQ(object->outputPosition, 6.0);
}

TEST_F(PlayerRender, InterpolatesBetweenTwoBuffersInsideASlice)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    ASSERT_TRUE(object.add({4, 8}));
    start(object, half);
    EXPECT_EQ(render(object, 8), (Floats{1, 1.5, 2, 3, 4, 6, 8, 4}));
}

// The last frame of the first slice needs its right neighbour from the second buffer, which frees the first
// buffer. So 0.0 replaces the left neighbour until the position reaches the second buffer.
TEST_F(PlayerRender, ASliceThatBeginsInASeamReadsZeroOnItsLeft)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    ASSERT_TRUE(object.add({4, 8}));
    start(object, half);
    EXPECT_EQ(render(object, 3), (Floats{1, 1.5, 2}));
    EXPECT_EQ(object->baseSampleIndex, 2);
    EXPECT_EQ(render(object, 4),
              (Floats{2 /* halfway from 0 to 4, instead of 3, halfway from 2 to 4 */, 4, 6, 8}));
}

// The data has a quarter of the device's rate, so three output frames lie between the last frame of the first
// buffer and the first frame of the second buffer. These three frames read 0.0 as their left neighbour.
TEST_F(PlayerRender, EveryFrameInASeamReadsZeroOnItsLeft)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    ASSERT_TRUE(object.add({4, 8}));
    start(object, half / 2);
    EXPECT_EQ(render(object, 5), (Floats{1, 1.25, 1.5, 1.75, 2}));
    EXPECT_EQ(render(object, 5), (Floats{1, 2, 3 /* a quarter, half, three quarters of 4 */, 4, 5}));
}

TEST_F(PlayerRender, ASliceThatBeginsInASeamReadsZeroOnItsLeftInStereo)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, -1, 2, -2}));
    ASSERT_TRUE(object.add({4, -4, 8, -8}));
    start(object, half, 2);
    EXPECT_EQ(render(object, 3, 2), (Floats{1, -1, 1.5, -1.5, 2, -2}));
    EXPECT_EQ(render(object, 3, 2), (Floats{2, -2, 4, -4, 6, -6}));
}

// At the device's rate no position lies between two frames, so the missing left neighbour has no effect.
TEST_F(PlayerRender, TheSeamIsInaudibleAtTheDevicesRate)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    ASSERT_TRUE(object.add({4, 8}));
    start(object, equal);
    EXPECT_EQ(render(object, 2), (Floats{1, 2}));
    EXPECT_EQ(object->baseSampleIndex, 2);
    EXPECT_EQ(render(object, 2), (Floats{4, 8}));
}

TEST_F(PlayerRender, AnIndexPastTheNewBufferIsZero)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    ASSERT_TRUE(object.add({3, 4}));
    ASSERT_TRUE(object.add({5, 6}));
    ASSERT_TRUE(object.add({7, 8, 9, 10, 11, 12, 13}));
    start(object, fourTimes);
    // Frame 1: reading index 4 takes the buffer {3, 4}, but index 4 is past the end of that buffer, so the
    // sample is 0. Reading the neighbour, index 5, takes the buffer {5, 6} and returns 6.
    // Frame 2: reading index 8 takes the last buffer and returns the third sample of that buffer, 9.
    EXPECT_EQ(render(object, 3), (Floats{1, 0, 9}));
    EXPECT_EQ(object->baseSampleIndex, 6);
    EXPECT_EQ(object.current(), (Floats{7, 8, 9, 10, 11, 12, 13}));
}

TEST_F(PlayerRender, AStepLongerThanTheWholeQueueEndsInSilence)
{
    const PlayerObject object;
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(object.add({1}));
    start(object, 44100.0f * 1024);
    EXPECT_EQ(render(object, 4), (Floats{1, 0, 0, 0}));
    EXPECT_EQ(object->outputPosition, 4096.0);
    EXPECT_EQ(object->queueCount, 0);
}

TEST_F(PlayerRender, RelativePositionRestartsWhereTheLookAheadReachesTheNextBuffer)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3}));
    ASSERT_TRUE(object.add({4, 5, 6}));
    start(object, equal);
    const double expected[] = {1, 2, 1 /* reading index 3 takes the second buffer */, 2, 3,
                               4, 4 /* unchanged without data */};
    for (const double relative : expected) {
        render(object, 1);
        EXPECT_EQ(object->outputPositionRelative, relative);
    }
    EXPECT_EQ(object->outputPosition, 6.0);
}

TEST_F(PlayerRender, RelativePositionAdvancesDuringSilenceInsideASlice)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    start(object, half);
    EXPECT_EQ(render(object, 10), (Floats{1, 1.5, 2, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(object->outputPosition, 5.0);
    EXPECT_EQ(object->outputPositionRelative, 5.0);
}

// The step 1 / 3 is 0.3333333432674408 in single precision.
TEST_F(PlayerRender, TheStepIsDividedInSinglePrecision)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add(Floats(16, 1.0f)));
    setDeviceRate(3);
    start(object, 1);
    render(object, 1);
    EXPECT_EQ(object->outputPosition, static_cast<double>(0x1.555556p-2f));
    render(object, 1);
    EXPECT_EQ(object->outputPosition, 2 * static_cast<double>(0x1.555556p-2f));
}

TEST_F(PlayerRender, TheDeviceRateIsRoundedToSingle)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3}));
    setDeviceRate(44100.0000001);
    start(object, equal);
    render(object, 2);
    EXPECT_EQ(object->deviceSampleRate, 44100.0f);
    EXPECT_EQ(object->outputPosition, 2.0);
}

// Mono samples are computed in double precision and rounded once. Stereo samples are rounded to single
// precision after each operation.
TEST_F(PlayerRender, MonoAndStereoRoundDifferently)
{
    const float s0 = 0x1.47ae14p-7f, s1 = 0x1.47ae14p-5f;
    setDeviceRate(10);
    const PlayerObject mono, stereo;
    ASSERT_TRUE(mono.add({s0, s1}));
    ASSERT_TRUE(stereo.add({s0, s0, s1, s1}));
    start(mono, 1);
    start(stereo, 1, 2);
    const Floats inMono = render(mono, 2), inStereo = render(stereo, 2, 2);
    EXPECT_EQ(inMono[1], 0x1.a9fbe6p-7f);
    EXPECT_EQ(inStereo[2], 0x1.a9fbe8p-7f);
    EXPECT_EQ(inStereo[3], 0x1.a9fbe8p-7f);
}

TEST_F(PlayerRender, OtherChannelCountsThanTwoPlayAsMono)
{
    for (const std::int32_t channels : {1, 0, 3, -1, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(channels);
        const PlayerObject object;
        ASSERT_TRUE(object.add({1, 2, 3}));
        start(object, equal, channels);
        EXPECT_EQ(render(object, 3, 2), (Floats{1, 1, 2, 2, 3, 3}));
    }
}

TEST_F(PlayerRender, AnOddStereoBufferSplitsAPair)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3}));
    ASSERT_TRUE(object.add({4, 5, 6}));
    start(object, equal, 2);
    // Frame 0 reads its right neighbour at the indexes 2 and 3. Reading index 3 frees the first buffer, so
    // the left sample of frame 1, at index 2, is missing.
    EXPECT_EQ(render(object, 1, 2), (Floats{1, 2}));
    EXPECT_EQ(render(object, 2, 2), (Floats{0, 4, 5, 6}));
}

TEST_F(PlayerRender, RateAndChannelsMayChangeDuringPlayback)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6, 7, 8}));
    start(object, equal);
    EXPECT_EQ(render(object, 2), (Floats{1, 2}));
    test::members.set<float>(object, "SampleRate", twice);
    EXPECT_EQ(render(object, 2), (Floats{3, 5}));
    test::members.set<float>(object, "SampleRate", equal);
    test::members.set<HostInteger>(object, "NumberOfChannels", 2);
    EXPECT_EQ(object->outputPosition, 6.0);
    EXPECT_EQ(render(object, 1, 2), (Floats{0, 0})) << "frame 6 of stereo is sample 12";
}

// The position may become any value, but no memory outside the buffers is written.
TEST_F(PlayerRender, ExtremeRatesAreSafe)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    for (const std::int32_t channels : {1, 2})
        for (const float rate :
             {0.0f, -0.0f, -1.0f, -44100.0f, infinity, -infinity, notANumber, 3e38f, 1e-40f})
            for (const double deviceRate : {44100.0, 0.0, -1.0, double{infinity}, double{notANumber}}) {
                SCOPED_TRACE(::testing::Message() << rate << " at " << deviceRate << ", " << channels);
                const PlayerObject object;
                ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6, 7, 8}));
                ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6, 7, 8}));
                device_spy::reset();
                setDeviceRate(deviceRate);
                start(object, rate, channels);
                for (int i = 0; i < 3; ++i) {
                    test::Slice slice({test::layout(2, 16), test::layout(1, 4)});
                    EXPECT_EQ(test::runCycle(object, slice), 0);
                    EXPECT_TRUE(slice.isIntact());
                }
            }
}

TEST_F(PlayerRender, ARateOfZeroRepeatsTheFirstSample)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({7, 8}));
    start(object, 0);
    EXPECT_EQ(render(object, 4), (Floats{7, 7, 7, 7}));
    EXPECT_EQ(object->outputPosition, 0.0);
}

TEST_F(PlayerRender, ANegativeRateLeavesTheBufferAtItsStart)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({7, 8}));
    start(object, -half);
    // The position -0.5 is truncated to index 0, so the sample is -0.5 times 8 plus 1.5 times 7.
    EXPECT_EQ(render(object, 4),
              (Floats{7, 6.5, 0 /* index -1: only the missing left neighbour counts */, -3.5}));
    EXPECT_EQ(object->outputPosition, -2.0);
    EXPECT_EQ(object.current(), (Floats{7, 8}));
}

TEST_F(PlayerRender, ARateOfNotANumberRendersNotANumberAfterTheFirstFrame)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({7, 8}));
    start(object, std::numeric_limits<float>::quiet_NaN());
    const Floats rendered = render(object, 3);
    EXPECT_EQ(rendered[0], 7.0f);
    EXPECT_TRUE(std::isnan(rendered[1]) && std::isnan(rendered[2]));
    EXPECT_TRUE(std::isnan(object->outputPosition));
}

TEST_F(PlayerRender, ResultsAreNotClipped)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1000, -3000}));
    start(object, half);
    EXPECT_EQ(render(object, 2), (Floats{1000, -1000}));
}

TEST_F(PlayerRender, ASliceWithoutFramesTakesABuffer)
{
    for (const std::int32_t channels : {1, 2}) {
        const PlayerObject object;
        ASSERT_TRUE(object.add({1, 2}));
        start(object, equal, channels);
        test::Slice slice({test::layout(2, 0)});
        EXPECT_EQ(test::runCycle(object, slice), 0);
        EXPECT_EQ(object->outputPosition, 0.0);
        EXPECT_EQ(object->outputPositionRelative, 0.0);
        EXPECT_EQ(object.current(), (Floats{1, 2}));
        EXPECT_EQ(object->queueCount, 0);
        EXPECT_EQ(object->isRunning, 1);
        EXPECT_EQ(render(object, 1, 2), channels == 1 ? (Floats{1, 1}) : (Floats{1, 2}));
    }
}

} // namespace
