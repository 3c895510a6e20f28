// Rendering into buffer lists with all kinds of buffers: which frames and channels are written, and that no
// memory outside the buffers is written.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/reference_player.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using test::BufferLayout;
using test::layout;
using test::PlayerObject;
using test::Slice;
using Floats = std::vector<float>;

const float before = Slice::floatBefore();
constexpr float s = 0.0f; // a sample of silence

class PlayerBufferLists : public test::FreshPlatform {
protected:
    /// Queue the samples 1 to 12 as mono or stereo frames and start the player at the device's rate.
    static void start(const PlayerObject& object, std::int32_t channels)
    {
        ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
        object->numberOfChannels = channels;
        ASSERT_TRUE(object.start());
    }
};

const struct {
    std::int32_t channels; // number of channels of the data
    std::vector<BufferLayout> layouts;
    int inUse;
    std::vector<Floats> expected; // expected content of each buffer
    double position;
    const char* why;
} facts[] = {
    {1, {layout(1, 3)}, -1, {{1, 2, 3}}, 3, "mono to one channel"},
    {1, {layout(2, 3)}, -1, {{1, 1, 2, 2, 3, 3}}, 3, "mono to both channels"},
    {1, {layout(3, 2)}, -1, {{1, 1, 1, 2, 2, 2}}, 2, "mono to all channels"},
    {1, {layout(1, 2), layout(2, 2)}, -1, {{1, 2}, {1, 1, 2, 2}}, 2, "mono to all channels of every buffer"},
    {1,
     {layout(1, 3), layout(1, 2)},
     -1,
     {{1, 2, 3}, {1, 2}},
     3,
     "the second buffer is shorter: not past its end"},
    {1,
     {layout(1, 2), layout(1, 3)},
     -1,
     {{1, 2}, {1, 2, before}},
     2,
     "the second buffer is longer: the first one gives the frames"},
    {1,
     {layout(1, 2), layout(2, 1)},
     -1,
     {{1, 2}, {1, 1}},
     2,
     "the second buffer is shorter, with two channels"},
    {1, {layout(1, 2), {2, 12, false}}, -1, {{1, 2}, {1, 1, 2}}, 2, "a buffer that ends inside a frame"},
    {1, {layout(1, 2), {0, 8, false}}, -1, {{1, 2}, {before, before}}, 2, "no channels in the second buffer"},
    {1,
     {{0, 16, false}, layout(1, 2)},
     -1,
     {{before, before, before, before}, {before, before}},
     0,
     "no channels in the first: no frames"},
    {1,
     {{2, 8, true}, layout(1, 1)},
     -1,
     {{before, before}, {1}},
     1,
     "a first buffer without memory gives the frames"},
    {1, {layout(1, 2), {1, 8, true}}, -1, {{1, 2}, {before, before}}, 2, "a second buffer without memory"},
    {1, {{1, 11, false}}, -1, {{1, 2}}, 2, "an odd size: whole frames only"},
    {1, {{2, 15, false}}, -1, {{1, 1, before}}, 1, "an odd size of two channels"},
    {1, {{2, 7, false}}, -1, {{before}}, 0, "smaller than a frame"},
    {1, {layout(1, 0)}, -1, {{}}, 0, "an empty buffer"},
    {1, {layout(1, 3)}, 0, {{before, before, before}}, 3, "no buffers listed: the position advances"},
    {1, {layout(1, 2), layout(1, 2)}, 1, {{1, 2}, {before, before}}, 2, "a second buffer that is not listed"},
    {1, {layout(1, 2), layout(2, 2), layout(1, 2)}, -1, {{1, 2}, {1, 1, 2, 2}, {1, 2}}, 2, "three buffers"},

    {2, {layout(2, 3)}, -1, {{1, 2, 3, 4, 5, 6}}, 3, "stereo to two channels"},
    {2, {layout(1, 3)}, -1, {{1, 3, 5}}, 3, "stereo to one channel: the left one only"},
    {2,
     {layout(6, 2)},
     -1,
     {{1, 2, before, before, before, before, 3, 4, before, before, before, before}},
     2,
     "stereo to six channels: the others stay unchanged"},
    {2, {layout(3, 1)}, -1, {{1, 2, before}}, 1, "stereo to three channels"},
    {2, {layout(2, 2), layout(2, 2)}, -1, {{1, 2, 3, 4}, {1, 2, 3, 4}}, 2, "stereo to every buffer"},
    {2,
     {layout(1, 2), layout(1, 2)},
     -1,
     {{1, 3}, {1, 3}},
     2,
     "two buffers of one channel: the left one in each"},
    {2, {layout(2, 2), layout(2, 1)}, -1, {{1, 2, 3, 4}, {1, 2}}, 2, "the second buffer is shorter"},
    {2,
     {layout(2, 2), {2, 12, false}},
     -1,
     {{1, 2, 3, 4}, {1, 2, 3}},
     2,
     "a buffer that ends inside a frame"},
    {2, {layout(2, 1), layout(2, 2)}, -1, {{1, 2}, {1, 2, before, before}}, 1, "the second buffer is longer"},
    {2,
     {layout(2, 2), {0, 12, false}},
     -1,
     {{1, 2, 3, 4}, {3, 4, before}},
     2,
     "no channels in the second: every frame goes to its first two samples"},
    {2,
     {layout(2, 2), {0, 4, false}},
     -1,
     {{1, 2, 3, 4}, {3}},
     2,
     "no channels in the second, and only one sample"},
    {2, {{0, 16, false}}, -1, {{before, before, before, before}}, 0, "no channels in the first: no frames"},
    {2,
     {{2, 8, true}, layout(2, 1)},
     -1,
     {{before, before}, {1, 2}},
     1,
     "a first buffer without memory gives the frames"},
    {2, {{2, 23, false}}, -1, {{1, 2, 3, 4, before}}, 2, "an odd size: whole frames only"},
    {2, {{2, 7, false}}, -1, {{before}}, 0, "smaller than a frame"},
    {2, {layout(2, 3)}, 0, {{before, before, before, before, before, before}}, 3, "no buffers listed"},
    {2,
     {layout(1, 2), layout(2, 2), layout(6, 1)},
     -1,
     {{1, 3}, {1, 2, 3, 4}, {1, 2, before, before, before, before}},
     2,
     "three buffers"},
};

TEST_F(PlayerBufferLists, AreFilledAsTheirLayoutSays)
{
    for (const auto& fact : facts) {
        SCOPED_TRACE(::testing::Message() << fact.why << ", data of " << fact.channels << " channels");
        const PlayerObject object;
        start(object, fact.channels);
        Slice slice(fact.layouts, fact.inUse);
        EXPECT_EQ(test::runCycle(object, slice), 0);
        for (std::size_t b = 0; b < fact.expected.size(); ++b)
            EXPECT_EQ(slice.floats(b), fact.expected[b]) << "buffer " << b;
        EXPECT_TRUE(slice.isIntact()) << "nothing outside the buffers is written";
        EXPECT_EQ(object->outputPosition, fact.position);
        EXPECT_EQ(object->outputPositionRelative, fact.position);
        EXPECT_EQ(object->isRunning, 1);
    }
}

TEST_F(PlayerBufferLists, AreZeroedToTheLastByteWithoutData)
{
    const std::vector<BufferLayout> layouts = {
        {2, 15, false}, {0, 7, false}, {6, 24, false}, {1, 8, true}, {1, 3, false}};
    for (const bool isStopRequested : {false, true})
        for (const bool noUnderflow : {false, true})
            for (int inUse = 0; inUse <= 5; ++inUse) {
                SCOPED_TRACE(::testing::Message() << isStopRequested << noUnderflow << inUse);
                const PlayerObject object;
                ASSERT_TRUE(object.start());
                if (isStopRequested) {
                    ASSERT_TRUE(object.add({1, 2}));
                }
                object->stopRequested = isStopRequested;
                object->noUnderflow = noUnderflow;
                Slice slice(layouts, inUse);
                EXPECT_EQ(test::runCycle(object, slice), 0);
                for (std::size_t b = 0; b < layouts.size(); ++b) {
                    const bool isSilent = b < static_cast<std::size_t>(inUse) && !layouts[b].isAbsent;
                    EXPECT_EQ(slice.bytes(b),
                              std::vector<unsigned char>(layouts[b].bytes, isSilent ? 0 : Slice::before));
                }
                EXPECT_TRUE(slice.isIntact());
            }
}

TEST_F(PlayerBufferLists, ASliceEndsInSilenceWhenTheQueueRunsEmpty)
{
    const PlayerObject mono, stereo;
    ASSERT_TRUE(mono.add({1, 2}));
    ASSERT_TRUE(mono.start());
    Slice inMono({layout(2, 4), layout(1, 4)});
    test::runCycle(mono, inMono);
    EXPECT_EQ(inMono.floats(0), (Floats{1, 1, 2, 2, s, s, s, s}));
    EXPECT_EQ(inMono.floats(1), (Floats{1, 2, s, s}));
    EXPECT_EQ(mono->outputPosition, 4.0);

    ASSERT_TRUE(stereo.add({1, 2, 3, 4}));
    stereo->numberOfChannels = 2;
    ASSERT_TRUE(stereo.start());
    Slice inStereo({layout(3, 4)});
    test::runCycle(stereo, inStereo);
    EXPECT_EQ(inStereo.floats(0), (Floats{1, 2, before, 3, 4, before, s, s, before, s, s, before}));
    EXPECT_EQ(stereo->outputPosition, 4.0);
}

/// Expect that a player writes the same bytes as the reference player into two buffers. The first buffer has
/// `channels` channels and 11 frames; the second one has `bytes` bytes. The data has half the device's
/// rate and three parts, so one span begins at the start of the slice and another one at frame 6.
void expectSameBytes(std::int32_t dataChannels, std::uint32_t channels, std::uint32_t bytes, bool isAbsent)
{
    const PlayerObject object;
    reference::Player plain;
    for (const std::size_t frames : {2u, 1u, 3u}) {
        Floats samples(frames * static_cast<std::size_t>(dataChannels));
        for (float& sample : samples) sample = static_cast<float>(&sample - samples.data()) + 0.25f;
        ASSERT_TRUE(object.add(samples));
        plain.waiting.push_back(samples);
    }
    object->numberOfChannels = plain.numberOfChannels = dataChannels;
    object->sampleRate = plain.sampleRate = 22050;
    device_spy::reset();
    ASSERT_TRUE(object.start());
    plain.start(44100);

    const std::vector<BufferLayout> layouts = {layout(std::max(channels, 1u), 11),
                                               {channels, bytes, isAbsent}};
    Slice slice(layouts);
    reference::Slice expected = {{}, layouts.size()};
    for (const BufferLayout& each : layouts)
        expected.buffers.push_back(
            {each.channels, std::vector<unsigned char>(each.bytes, Slice::before), each.isAbsent});
    test::runCycle(object, slice);
    plain.render(expected);
    for (std::size_t b = 0; b < layouts.size(); ++b)
        EXPECT_EQ(slice.bytes(b), expected.buffers[b].bytes) << "buffer " << b;
    EXPECT_TRUE(slice.isIntact()) << "nothing outside the buffers is written";
    EXPECT_EQ(object->outputPosition, plain.position);
    EXPECT_EQ(object->baseSampleIndex, plain.base);
}

TEST_F(PlayerBufferLists, EveryChannelCountIsWrittenUpToEveryEndOfABuffer)
{
    for (const std::int32_t dataChannels : {1, 2})
        for (std::uint32_t channels = 0; channels <= 9; ++channels)
            // Up to one frame more than the slice; every second buffer ends inside a sample.
            for (std::uint32_t bytes = 0; bytes <= 12 * 4 * channels + 10; bytes += 2) {
                SCOPED_TRACE(::testing::Message() << "data of " << dataChannels << " channels, buffer of "
                                                  << channels << " channels and " << bytes << " bytes");
                expectSameBytes(dataChannels, channels, bytes, false);
                if (bytes == 40) expectSameBytes(dataChannels, channels, bytes, true);
                if (HasFailure()) return;
            }
}

} // namespace
