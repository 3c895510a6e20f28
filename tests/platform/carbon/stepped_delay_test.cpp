// Tests that Delay advances a stepped device.
#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>
#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

namespace {

UInt32 frames = 0;

OSStatus count(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
               AudioBufferList* output, const AudioTimeStamp*, void*)
{
    frames += output->mBuffers[0].mDataByteSize / sizeof(Float32) / output->mBuffers[0].mNumberChannels;
    return noErr;
}

TEST(SteppedDelay, AdvancesTheDeviceByItsTime)
{
    KVXSimulatedDevice description = {};
    description.sampleRate = 48000;
    description.sliceFrames = 512;
    description.isStepped = 1;
    const KVXDeviceID device = KVXPlatformAddSimulatedDevice(&description);
    ASSERT_NE(device, 0u);
    ASSERT_EQ(AudioDeviceAddIOProc(device, count, nullptr), noErr);
    Delay(1, nullptr);
    EXPECT_EQ(frames, 0u) << "the device does not run yet";

    ASSERT_EQ(AudioDeviceStart(device, count), noErr);
    unsigned long after = 0;
    Delay(1, &after);
    EXPECT_EQ(frames, 800u);
    EXPECT_LE(after, TickCount());
    Delay(60 * 60, nullptr);
    EXPECT_EQ(frames, 800u + 60 * 48000);

    ASSERT_EQ(AudioDeviceStop(device, count), noErr);
    Delay(1, nullptr);
    EXPECT_EQ(frames, 800u + 60 * 48000);
    EXPECT_EQ(AudioDeviceRemoveIOProc(device, count), noErr);
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
}

} // namespace
