// The output of the buffered player equals that of the reference player bit by bit, for many block lengths,
// slices and rates.
#include "tests/endtoend/expected_samples.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/endtoend/reference_output.h"
#include "tests/support/sound_samples.h"

#include <gtest/gtest.h>

namespace {

using namespace endtoend;

using Interpolation = LoadedHostTest;

struct Fact {
    int channels; ///< channel count of the player; 2: the queued blocks are stereo
    float sampleRate;
    double deviceRate;
    uint32_t deviceChannels;
    uint32_t sliceFrames;
    std::vector<std::size_t> blockFrames;
    const char* why;
};

// clang-format off
const Fact facts[] = {
    {1, 44100, 44100, 2,  512, {4096},               "equal rates: every sample unchanged, on every channel"},
    {2, 44100, 44100, 2,  512, {4096},               "equal rates, stereo"},
    {1, 44100, 44100, 1,  512, {513},                "one frame into the second slice"},
    {1, 44100, 44100, 2,  512, {512, 512, 512},      "blocks and slices end together"},
    {1, 44100, 44100, 2,  512, {511, 1, 513, 1, 1},  "blocks and slices end at different frames"},
    {2, 44100, 44100, 4,  512, {700, 300},           "further channels of the device stay silent"},
    {1, 44100, 44100, 6,  100, {700, 300},           "mono goes to all channels"},
    {2, 44100, 44100, 1,   64, {200, 200},           "a device of one channel gets the left channel"},
    {1, 22050, 44100, 2,  512, {3000, 3000},         "half the rate: midpoints"},
    {2, 22050, 44100, 2,  511, {3001, 2999},         "an odd slice"},
    {1, 44100, 48000, 2,  512, {4000, 4000, 4000},   "a ratio without an exact binary fraction"},
    {2, 44100, 48000, 2,  512, {4000, 4000, 4000},   "the same in stereo, which uses single precision"},
    {1, 48000, 44100, 2,  512, {4000, 4000, 4000},   "a lower device rate: frames are skipped"},
    {2, 48000, 44100, 2,  512, {4000, 4000, 4000},   "the same in stereo"},
    {1,  8000, 44100, 2,  512, {500, 500, 500},      "a much higher device rate: slices end between neighbours"},
    {2,  8000, 44100, 2,   16, {50, 50, 50, 50},     "short slices: many start at a block end"},
    {1,  8000, 44100, 2,    1, {5, 4, 3, 2, 1},      "one frame at a time"},
    {1, 96000, 44100, 2,  128, {1000, 3, 1000},      "a block shorter than the step"},
    {2, 96000,  8000, 2,  128, {1000, 24, 1000},     "a step of twelve frames"},
    {1, 44100.5f, 44100, 2, 512, {2000, 2000},       "a fractional rate"},
    {0, 44100, 48000, 2,  512, {2000, 2000},         "0 channels play as mono"},
    {3, 44100, 48000, 2,  512, {2000, 2000},         "3 channels play as mono"},
};
// clang-format on

void queue(host::Object& player, ReferenceOutput& reference, const Fact& fact)
{
    unsigned seed = 1;
    for (std::size_t frames : fact.blockFrames) {
        const support::Sound noise = support::makeNoise(44100, fact.channels == 2 ? 2 : 1, frames, seed++);
        ASSERT_TRUE(player.call("AddFloatAudio", host::MemoryBlock::copyOf(noise.samples)).boolean());
        reference.add(noise.samples);
    }
}

TEST_F(Interpolation, EqualsTheReferencePlayerBitForBit)
{
    for (const Fact& fact : facts) {
        SCOPED_TRACE(fact.why);
        SteppedDevice device(fact.deviceRate, fact.deviceChannels, fact.sliceFrames);
        host::Object player = loaded.host.create(playerClass);
        player.set("SampleRate", fact.sampleRate);
        player.set("NumberOfChannels", fact.channels);
        player.set("OutputDeviceID", std::int64_t(device.id()));
        ReferenceOutput reference(fact.channels, fact.sampleRate, float(fact.deviceRate));
        queue(player, reference, fact);

        ASSERT_TRUE(player.call("Start").boolean());
        while (player.get("IsRunning").boolean()) device.step(fact.sliceFrames);
        expectSamples(device.output(), reference.playToEnd(fact.sliceFrames, fact.deviceChannels));
        EXPECT_EQ(player.get("OutputPosition").number(), reference.position());
    }
}

TEST_F(Interpolation, ContinuesAfterAnUnderflow)
{
    // The position stands still during an underflow. When new data is queued, samples before the position are
    // skipped.
    SteppedDevice device(44100, 2, 64);
    host::Object player = loaded.host.create(playerClass);
    player.set("SampleRate", 30000.0f);
    player.set("NoUnderflow", true);
    player.set("OutputDeviceID", std::int64_t(device.id()));
    ReferenceOutput reference(1, 30000.0f, 44100.0f);

    reference.setNoUnderflow(true);
    for (unsigned seed = 1; seed <= 3; ++seed) {
        const support::Sound noise = support::makeNoise(30000, 1, 500, seed);
        ASSERT_TRUE(player.call("PlayFloatAudio", host::MemoryBlock::copyOf(noise.samples)).boolean());
        reference.add(noise.samples);
        for (int i = 0; i < 20; ++i) { // render more frames than the queue has
            ASSERT_EQ(device.step(64), 64u);
            reference.play(64, 2);
        }
        EXPECT_TRUE(player.get("HadUnderflow").boolean());
        EXPECT_EQ(player.get("OutputPosition").number(), reference.position());
    }
    expectSamples(device.output(), reference.played());
    player.set("NoUnderflow", false);
    player.call("Stop");
}

TEST(ReferencePlayer, InterpolatesAsComputedByHand)
{
    ReferenceOutput half(1, 22050, 44100);
    half.add({1.0f, 0.0f});
    half.add({-1.0f});
    half.play(6, 1);
    EXPECT_EQ(half.played(), (std::vector<float>{1.0f, 0.5f, 0.0f, -0.5f, -1.0f, -0.5f}));
    half.play(6, 1);
    EXPECT_FALSE(half.isRunning()) << "the look-ahead has freed the last block";

    ReferenceOutput stereo(2, 44100, 44100);
    stereo.add({0.1f, 0.2f, 0.3f, 0.4f});
    stereo.play(3, 3);
    EXPECT_EQ(stereo.played(), (std::vector<float>{0.1f, 0.2f, 0, 0.3f, 0.4f, 0, 0, 0, 0}));

    ReferenceOutput seam(1, 22050, 44100);
    seam.add({1.0f, 0.5f});
    seam.add({0.25f, 0.25f, 0.25f, 0.25f});
    seam.play(3, 1);
    seam.play(2, 1);
    EXPECT_EQ(seam.played(), (std::vector<float>{1.0f, 0.75f, 0.5f, 0.125f, 0.25f}))
        << "the first block was freed with the left neighbour";
}

} // namespace
