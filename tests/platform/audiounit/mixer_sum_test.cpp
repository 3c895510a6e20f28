// Tests the output of the multichannel mixer, sample by sample.
#include "tests/platform/audiounit/sound.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

using namespace test;

constexpr UInt32 limit = 1156;

struct Mixer : Unit {
    explicit Mixer(UInt32 outChannels = 2) : Unit('mcmx', 'aumx'), out(canonical(44100, outChannels))
    {
        EXPECT_EQ(setFormat(2, out), noErr);
    }
    /// Connect an input to a track that plays a sound.
    Track& play(UInt32 bus, Sound sound)
    {
        const auto channels = static_cast<UInt32>(sound.size());
        tracks.push_back(std::make_unique<Track>(std::move(sound)));
        EXPECT_EQ(setFormat(1, canonical(44100, channels), bus), noErr);
        EXPECT_EQ(setCallback(Track::callback, tracks.back().get(), bus), noErr);
        return *tracks.back();
    }
    void put(AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element, Float32 value) const
    {
        EXPECT_EQ(AudioUnitSetParameter(*this, id, scope, element, value, 0), noErr);
    }
    Rendering ready() const
    {
        EXPECT_EQ(AudioUnitInitialize(*this), noErr);
        return Rendering(*this, out, limit + 1);
    }

    AudioStreamBasicDescription out;
    std::vector<std::unique_ptr<Track>> tracks;
};

TEST(MixerSum, ChangesNoBitOfASingleAudibleInput)
{
    const Sound sound = anyBits(6, 3000);
    for (const UInt32 channels : {1u, 2u, 6u})
        for (const UInt32 slice : {UInt32{1}, UInt32{512}, limit}) {
            SCOPED_TRACE(std::to_string(channels) + " channels, slices of " + std::to_string(slice));
            Mixer mixer(channels);
            mixer.play(3, Sound(sound.begin(), sound.begin() + channels));
            // Connected inputs that are muted or disabled do not change the output.
            mixer.play(1, anyBits(channels, 3000));
            mixer.put(kMultiChannelMixerParam_Volume, 1, 1, 0);
            mixer.play(6, anyBits(channels, 3000));
            mixer.put(kMultiChannelMixerParam_Enable, 1, 6, 0);
            for (const AudioUnitScope scope : {1u, 2u}) {
                EXPECT_EQ(mixer.set(kAudioUnitProperty_MeteringMode, scope, 0, UInt32{1}), noErr);
            }
            Rendering rendering = mixer.ready();
            const Sound output = rendering.play(3000, slice);
            for (UInt32 c = 0; c < channels; ++c)
                EXPECT_TRUE(sameBits(output[c], sound[c])) << "channel " << c;
        }
}

TEST(MixerSum, RefusesMoreThanTheLimit)
{
    Mixer mixer;
    const Track& track = mixer.play(0, whiteNoise(2, 3000));
    Rendering rendering = mixer.ready();
    EXPECT_EQ(rendering.slice(limit + 1), kAudioUnitErr_TooManyFramesToProcess);
    EXPECT_EQ(track.calls, 0);
    EXPECT_EQ(rendering.slice(limit), noErr);
    EXPECT_EQ(rendering.slice(0), noErr);
}

constexpr int none = -1;

TEST(MixerSum, RoutesChannels)
{
    // clang-format off
    const struct { UInt32 in, out; int from[7]; const char* why; } facts[] = {
        {1, 1, {0},                            "mono to mono"},
        {1, 2, {0, 0},                         "mono to both of stereo"},
        {1, 3, {0, none, none},                "mono to the first of three"},
        {2, 1, {0},                            "the first of stereo"},
        {2, 2, {0, 1},                         "stereo to stereo"},
        {2, 6, {0, 1, none, none, none, none}, "stereo to the first two of six"},
        {6, 2, {0, 1},                         "the first two of six"},
        {6, 6, {0, 1, 2, 3, 4, 5},             "six to six"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Sound sound = whiteNoise(fact.in, 700), nothing = silence(1, 700);
        Mixer mixer(fact.out);
        mixer.play(0, sound);
        Rendering rendering = mixer.ready();
        const Sound output = rendering.play(700, 512);
        for (UInt32 c = 0; c < fact.out; ++c)
            EXPECT_TRUE(sameBits(output[c], fact.from[c] == none ? nothing[0]
                                                                 : sound[static_cast<UInt32>(fact.from[c])]))
                << c;
    }
}

TEST(MixerSum, AddsInputsOfDifferentChannelCounts)
{
    Mixer mixer(2);
    mixer.play(0, steady(1, 100, 0.5f));
    mixer.play(1, steady(2, 100, 0.25f));
    Mixer wide(3);
    wide.play(0, steady(1, 100, 0.5f));
    wide.play(1, steady(3, 100, 0.25f));
    Rendering both = mixer.ready(), three = wide.ready();
    EXPECT_EQ(both.play(100, 100),
              (Sound{std::vector<Float32>(100, 0.75f), std::vector<Float32>(100, 0.75f)}));
    EXPECT_EQ(three.play(100, 100), (Sound{std::vector<Float32>(100, 0.75f), std::vector<Float32>(100, 0.25f),
                                           std::vector<Float32>(100, 0.25f)}));
}

TEST(MixerSum, AddsInTheOrderOfTheInputs)
{
    // clang-format off
    const struct { Float32 values[3], sum; const char* why; } facts[] = {
        {{1e8f, 1, -1e8f}, 0, "the 1 is lost in the first addition"},
        {{1e8f, -1e8f, 1}, 1, "nothing is lost"},
        {{0.1f, 0.2f, 0.3f}, 0.1f + 0.2f + 0.3f, "plain addition"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        Mixer mixer(1);
        for (UInt32 i = 0; i < 3; ++i) mixer.play(2 * i + 1, steady(1, 10, fact.values[i]));
        Rendering rendering = mixer.ready();
        EXPECT_EQ(rendering.play(10, 10)[0][9], fact.sum) << fact.why;
    }
}

TEST(MixerSum, AppliesVolumeEnableAndPan)
{
    constexpr Float32 quiet = 0.1f;
    // clang-format off
    const struct { UInt32 in, out; Float32 volume, enable, pan, master; Float32 left, right; const char* why; } facts[] = {
        {2, 2, 1,     1,     0,     1,     1,     1,     "neutral"},
        {2, 2, 0.5f,  1,     0,     1,     0.5f,  0.5f,  "volume of the input"},
        {2, 2, quiet, 1,     0,     1,     quiet, quiet, "exactly the gain that was set"},
        {2, 2, 0,     1,     0,     1,     0,     0,     "volume 0"},
        {2, 2, 1,     1,     0,     0.25f, 0.25f, 0.25f, "volume of the output"},
        {2, 2, 0.5f,  1,     0,     0.5f,  0.25f, 0.25f, "both volumes"},
        {2, 2, 1,     0,     0,     1,     0,     0,     "disabled"},
        {2, 2, 1,     0.5f,  0,     1,     0,     0,     "enable 0.5 is off"},
        {2, 2, 1,     0.99f, 0,     1,     0,     0,     "enable 0.99 is off"},
        {2, 2, 1,     1,     1,     1,     0,     1,     "far right"},
        {2, 2, 1,     1,     -1,    1,     1,     0,     "far left"},
        {2, 2, 1,     1,     0.25f, 1,     0.75f, 1,     "a little right"},
        {2, 2, 1,     1,     -0.5f, 1,     1,     0.5f,  "half left"},
        {2, 2, 0.5f,  1,     0.5f,  1,     0.25f, 0.5f,  "volume and pan"},
        {1, 2, 1,     1,     1,     1,     0,     1,     "mono, far right"},
        {1, 2, 1,     1,     -0.5f, 1,     1,     0.5f,  "mono, half left"},
        {3, 2, 1,     1,     -1,    1,     1,     0,     "the first two of three"},
        {2, 3, 1,     1,     -1,    1,     1,     1,     "three output channels have no balance"},
        {2, 6, 1,     1,     1,     1,     1,     1,     "six output channels have no balance"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const Float32 sample : {1.0f, -0.5f}) {
            SCOPED_TRACE(fact.why);
            Mixer mixer(fact.out);
            mixer.play(0, steady(fact.in, 600, sample));
            mixer.put(kMultiChannelMixerParam_Volume, 1, 0, fact.volume);
            mixer.put(kMultiChannelMixerParam_Enable, 1, 0, fact.enable);
            mixer.put(kMultiChannelMixerParam_Pan, 1, 0, fact.pan);
            mixer.put(kMultiChannelMixerParam_Volume, 2, 0, fact.master);
            Rendering rendering = mixer.ready();
            const Sound output = rendering.play(600, 256);
            for (const std::size_t frame : {std::size_t{0}, std::size_t{599}}) {
                EXPECT_EQ(output[0][frame], sample * fact.left)
                    << "a value set before applies from the first frame on";
                EXPECT_EQ(output[1][frame], sample * fact.right);
            }
        }
}

TEST(MixerSum, IgnoresPanWithAMonoOutput)
{
    for (const UInt32 in : {1u, 2u})
        for (const Float32 pan : {-1.0f, 1.0f}) {
            const Sound sound = whiteNoise(in, 300);
            Mixer mixer(1);
            mixer.play(0, sound);
            mixer.put(kMultiChannelMixerParam_Pan, 1, 0, pan);
            Rendering rendering = mixer.ready();
            EXPECT_TRUE(sameBits(rendering.play(300, 100)[0], sound[0]));
        }
}

// The output is silent even if the input has NaN and infinite samples.
TEST(MixerSum, IsSilentWhereTheGainIsZero)
{
    const Sound nothing = silence(1, 1000);
    Mixer mixer;
    mixer.play(0, anyBits(2, 1000));
    mixer.put(kMultiChannelMixerParam_Pan, 1, 0, 1);
    Rendering rendering = mixer.ready();
    EXPECT_TRUE(sameBits(rendering.play(1000, 500)[0], nothing[0]));
}

TEST(MixerSum, PullsConnectedInputsOnly)
{
    Mixer mixer;
    ASSERT_EQ(mixer.set(kAudioUnitProperty_ElementCount, 1, 0, UInt32{64}), noErr);
    Track& last = mixer.play(63, steady(2, 5000, 0.5f));
    Track& off = mixer.play(2, steady(2, 5000, 0.25f));
    mixer.put(kMultiChannelMixerParam_Enable, 1, 2, 0);
    Rendering rendering = mixer.ready();
    EXPECT_EQ(rendering.play(64, 64), steady(2, 64, 0.5f));
    EXPECT_EQ(last.calls, 1);
    EXPECT_EQ(last.lastBus, 63u);
    EXPECT_EQ(off.calls, 1) << "a disabled input is pulled too";
    EXPECT_EQ(off.lastBus, 2u);

    ASSERT_EQ(mixer.setCallback(nullptr, nullptr, 63), noErr);
    ASSERT_EQ(mixer.setCallback(nullptr, nullptr, 2), noErr);
    EXPECT_EQ(rendering.play(64, 64), silence(2, 64)) << "without inputs: silence and no error";
    EXPECT_EQ(last.calls, 1);
    EXPECT_EQ(rendering.flags, UInt32{kAudioUnitRenderAction_OutputIsSilence});
    EXPECT_EQ(mixer.get<OSStatus>(kAudioUnitProperty_LastRenderError, 0, 0), noErr);
}

TEST(MixerSum, SetsTheSilenceFlagIfAllInputsDo)
{
    Mixer mixer;
    Track& first = mixer.play(0, silence(2, 5000));
    Track& second = mixer.play(1, silence(2, 5000));
    Rendering rendering = mixer.ready();
    // clang-format off
    const struct { bool first, second; UInt32 flags; const char* why; } facts[] = {
        {false, false, 0,    "neither input"},
        {true,  false, 0,    "the first input"},
        {false, true,  0,    "the second input"},
        {true,  true,  0x10, "both inputs"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        first.saysSilence = fact.first;
        second.saysSilence = fact.second;
        ASSERT_EQ(rendering.slice(64), noErr);
        EXPECT_EQ(rendering.flags, fact.flags) << fact.why;
        EXPECT_EQ(second.lastFlags, 0u) << "the flag of one input does not reach the next";
    }
    first.saysSilence = second.saysSilence = false;
    AudioUnitRenderActionFlags flags = kAudioUnitRenderAction_OutputIsSilence;
    const AudioTimeStamp time = sampleTime(0);
    rendering.list.restore();
    ASSERT_EQ(AudioUnitRender(mixer, &flags, &time, 0, 64, rendering.list.get()), noErr);
    EXPECT_EQ(second.lastFlags, 0u) << "the caller's flag does not reach an input";
    EXPECT_EQ(flags, 0u);
}

TEST(MixerSum, FailsWithTheFirstInputThatFails)
{
    Mixer mixer;
    Track& first = mixer.play(0, steady(2, 5000, 0.5f));
    Track& second = mixer.play(1, steady(2, 5000, 0.25f));
    Rendering rendering = mixer.ready();
    second.status = -1234;
    EXPECT_EQ(rendering.slice(64), -1234);
    EXPECT_EQ(static_cast<Float32*>(rendering.list[0].mData)[0], 0) << "a failed slice is silent";
    first.status = -77;
    EXPECT_EQ(rendering.slice(64), -77);
    EXPECT_EQ(second.calls, 2) << "the other inputs are pulled too";
    EXPECT_EQ(mixer.get<OSStatus>(kAudioUnitProperty_LastRenderError, 0, 0), -77);
    first.status = second.status = noErr;
    EXPECT_EQ(rendering.play(64, 64), steady(2, 64, 0.75f));
}

// ---- changes during rendering ----

// clang-format off
const struct { AudioUnitParameterID id; AudioUnitScope scope; Float32 value, left, right; const char* name; } changes[] = {
    {kMultiChannelMixerParam_Volume, 1, 0.25f, 0.25f, 0.25f, "volume of an input"},
    {kMultiChannelMixerParam_Volume, 1, 0,     0,     0,     "volume 0"},
    {kMultiChannelMixerParam_Enable, 1, 0,     0,     0,     "enable"},
    {kMultiChannelMixerParam_Pan,    1, 1,     0,     1,     "pan to the right"},
    {kMultiChannelMixerParam_Pan,    1, -0.5f, 1,     0.5f,  "pan to the left"},
    {kMultiChannelMixerParam_Volume, 2, 0.5f,  0.5f,  0.5f,  "volume of the output"},
};
// clang-format on

TEST(MixerRamp, TakesEveryChangeIn512Frames)
{
    for (const auto& change : changes)
        for (const UInt32 slice : {UInt32{1}, UInt32{100}, UInt32{512}, limit}) {
            SCOPED_TRACE(std::string(change.name) + ", slices of " + std::to_string(slice));
            Mixer mixer;
            mixer.play(0, steady(2, 5000, 1));
            Float32 before = 0;
            ASSERT_EQ(AudioUnitGetParameter(mixer, change.id, change.scope, 0, &before), noErr);
            Rendering rendering = mixer.ready();
            EXPECT_EQ(rendering.play(50, 50), steady(2, 50, 1));

            mixer.put(change.id, change.scope, 0, change.value);
            const Sound down = rendering.play(1200, slice);
            const Float32 ends[] = {change.left, change.right};
            for (UInt32 c = 0; c < 2; ++c) {
                for (UInt32 i = 0; i < 1200; ++i) {
                    const Float32 progress = i < 511 ? static_cast<Float32>(i + 1) / 512 : 1;
                    ASSERT_NEAR(down[c][i], 1 + (ends[c] - 1) * progress, 1e-6)
                        << "frame " << i << ", channel " << c;
                }
                EXPECT_EQ(down[c][511], ends[c]) << "exact after 512 frames";
                EXPECT_EQ(down[c][1199], ends[c]);
            }

            mixer.put(change.id, change.scope, 0, before);
            const Sound up = rendering.play(1200, slice);
            EXPECT_LE(largestStep(up[0], 0, 1200), 1.0001 / 512);
            EXPECT_EQ(up[0][1199], 1) << "back at the former value";
            EXPECT_EQ(up[1][1199], 1);
        }
}

TEST(MixerRamp, CanChangeDirection)
{
    Mixer mixer;
    mixer.play(0, steady(2, 9000, 1));
    Rendering rendering = mixer.ready();
    rendering.play(10, 10);
    Float32 last = 1;
    for (const Float32 volume : {0.0f, 1.0f, 0.5f, 0.25f, 0.75f, 0.0f}) {
        mixer.put(kMultiChannelMixerParam_Volume, 1, 0, volume);
        const Sound output = rendering.play(200, 64);
        EXPECT_LE(std::abs(output[0][0] - last), 1.001f / 512);
        EXPECT_LE(largestStep(output[0], 0, 200), 1.001 / 512);
        last = output[0][199];
    }
}

TEST(MixerRamp, IsSkippedBeforeTheFirstSlice)
{
    Mixer mixer;
    mixer.play(0, steady(2, 9000, 1));
    Rendering rendering = mixer.ready();
    mixer.put(kMultiChannelMixerParam_Volume, 2, 0, 0.5f);
    EXPECT_EQ(rendering.play(10, 10), steady(2, 10, 0.5f)) << "after initialising";
    mixer.put(kMultiChannelMixerParam_Volume, 2, 0, 0.25f);
    ASSERT_EQ(AudioUnitReset(mixer, 0, 0), noErr);
    EXPECT_EQ(rendering.play(10, 10), steady(2, 10, 0.25f)) << "after a reset";

    // An input without a source takes its new volume at once.
    Track late(steady(2, 9000, 1));
    mixer.put(kMultiChannelMixerParam_Volume, 1, 0, 0);
    rendering.play(600, 512);
    mixer.put(kMultiChannelMixerParam_Volume, 1, 1, 0.5f);
    rendering.play(10, 10);
    ASSERT_EQ(mixer.setCallback(Track::callback, &late, 1), noErr);
    EXPECT_EQ(rendering.play(10, 10), steady(2, 10, 0.125f));
}

} // namespace
