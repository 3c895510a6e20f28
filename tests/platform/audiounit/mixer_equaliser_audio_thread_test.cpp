// Tests that a slice through the mixer and the equaliser allocates nothing and takes no lock.
#include "tests/platform/audiounit/sound.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

TEST(RenderThread, AMixerAndAnEqualiserAllocateNothingAndTakeNoLock)
{
    const Unit mixer('mcmx', 'aumx'), equaliser('greq', 'aufx');
    Track first(whiteNoise(2, 40000)), second(whiteNoise(1, 40000));
    ASSERT_EQ(mixer.setFormat(1, canonical(44100, 1), 4), noErr);
    ASSERT_EQ(mixer.setCallback(Track::callback, &first, 0), noErr);
    ASSERT_EQ(mixer.setCallback(Track::callback, &second, 4), noErr);
    ASSERT_EQ(equaliser.set(kAudioUnitProperty_MakeConnection, 1, 0, AudioUnitConnection{mixer, 0, 0}),
              noErr);
    ASSERT_EQ(AudioUnitInitialize(mixer), noErr);
    ASSERT_EQ(AudioUnitInitialize(equaliser), noErr);
    Rendering rendering(equaliser, canonical(44100, 2), 1156);
    rendering.slice(64);

    const allocator_hook::Count count;
    for (UInt32 i = 0; i < 60; ++i) {
        const auto odd = static_cast<Float32>(i % 2), third = static_cast<Float32>(i % 3);
        if (i % 5 == 0) {
            mixer.set(kAudioUnitProperty_MeteringMode, 1, 0, i % 2);
            mixer.set(kAudioUnitProperty_MeteringMode, 2, 0, UInt32{1});
            equaliser.set(kAudioUnitProperty_BypassEffect, 0, 0, i % 2);
            AudioUnitReset(equaliser, 0, 0);
            AudioUnitReset(mixer, 0, 0);
        }
        allocator_hook::watchThisThread(true);
        AudioUnitSetParameter(mixer, kMultiChannelMixerParam_Volume, 1, 0, odd, 0);
        AudioUnitSetParameter(mixer, kMultiChannelMixerParam_Pan, 1, 4, third - 1, 0);
        AudioUnitSetParameter(equaliser, i % 31, 0, 0, 6 * third - 6, 0);
        AudioUnitSetParameter(equaliser, kGraphicEQParam_NumberOfBands, 0, 0, i % 7 ? 1 : 0, 0);
        const OSStatus status = rendering.slice(i % 4 ? 512 : 1156);
        Float32 level = 0;
        AudioUnitGetParameter(mixer, kMultiChannelMixerParam_PostAveragePower, 1, 0, &level);
        AudioUnitGetParameter(equaliser, 3, 0, 0, &level);
        allocator_hook::watchThisThread(false);
        ASSERT_EQ(status, noErr);
    }
    EXPECT_EQ(count.heapCalls(), 0);
    EXPECT_EQ(count.locks(), 0);
    EXPECT_EQ(first.calls, 61);
}

} // namespace
