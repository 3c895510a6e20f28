// Tests units connected to other units.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

OSStatus connect(AudioUnit source, const Unit& destination, UInt32 output = 0, UInt32 input = 0)
{
    return destination.set(kAudioUnitProperty_MakeConnection, 1, 0,
                           AudioUnitConnection{source, output, input});
}

TEST(Connection, SetsTheInputToTheSourcesFormat)
{
    const Unit source('genr'), destination('genr');
    ASSERT_EQ(source.setFormat(2, pcm(32000, 3, 16, isSigned | isPacked)), noErr);
    EXPECT_EQ(connect(source, destination), noErr);
    EXPECT_TRUE(destination.get<AudioStreamBasicDescription>(8, 1, 0) ==
                pcm(32000, 3, 16, isSigned | isPacked));
    EXPECT_EQ(connect(source, destination, 1), kAudioUnitErr_InvalidElement) << "no such output";
    EXPECT_EQ(connect(source, destination, 0, 1), kAudioUnitErr_InvalidElement) << "no such input";
    EXPECT_EQ(connect(destination, destination), kAudioUnitErr_InvalidPropertyValue) << "itself";
    EXPECT_EQ(connect(reinterpret_cast<AudioUnit>(4711), destination), badComponentInstance);
}

TEST(Connection, FormatsAreCheckedAtInitialisation)
{
    Unit source('genr');
    const Unit destination('genr');
    ASSERT_EQ(connect(source, destination), noErr);
    ASSERT_EQ(source.setFormat(2, canonical(48000, 2)), noErr);
    EXPECT_EQ(AudioUnitInitialize(destination), kAudioUnitErr_FormatNotSupported);
    ASSERT_EQ(destination.setFormat(1, canonical(48000, 2)), noErr);
    EXPECT_EQ(AudioUnitInitialize(destination), noErr);
    // While initialised, a unit connects only to an output that has the unit's present input format.
    const Unit other('genr');
    EXPECT_EQ(connect(other, destination), kAudioUnitErr_FormatNotSupported);
    ASSERT_EQ(other.setFormat(2, canonical(48000, 2)), noErr);
    EXPECT_EQ(connect(other, destination), noErr);
    EXPECT_EQ(connect(source, destination), noErr);
    ASSERT_EQ(AudioUnitUninitialize(destination), noErr);
    source.close();
    EXPECT_EQ(AudioUnitInitialize(destination), kAudioUnitErr_NoConnection) << "the source is closed";
    EXPECT_EQ(connect(nullptr, destination), noErr) << "disconnected";
    EXPECT_EQ(AudioUnitInitialize(destination), noErr);
}

TEST(Connection, PullsExactSamplesThroughThreeUnits)
{
    // Formats on the way: float non-interleaved -> 16 bits big-endian -> 24 bits -> float
    const Unit first('genr'), second('genr'), third('genr');
    Feeder feeder(canonical(44100, 2));
    ASSERT_EQ(first.setFormat(2, pcm(44100, 2, 16, isSigned | isPacked | isBig)), noErr);
    ASSERT_EQ(second.setFormat(2, pcm(44100, 2, 24, isSigned | isPacked)), noErr);
    ASSERT_EQ(first.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(connect(first, second), noErr);
    ASSERT_EQ(connect(second, third), noErr);
    for (const Unit* unit : {&first, &second, &third}) ASSERT_EQ(AudioUnitInitialize(*unit), noErr);
    List list(canonical(44100, 2), 500);
    const AudioTimeStamp time = sampleTime(123);
    ASSERT_EQ(AudioUnitRender(third, nullptr, &time, 0, 500, list.get()), noErr);
    for (UInt32 c = 0; c < 2; ++c)
        for (UInt32 i = 0; i < 500; ++i)
            ASSERT_EQ(static_cast<float*>(list[c].mData)[i], noise(123 + i, c)) << i << ", " << c;
    EXPECT_EQ(feeder.calls, 1);
    ASSERT_EQ(feeder.requests[0].time.mSampleTime, 123);
}

TEST(Connection, PullsNoMoreThanTheSourcesSliceLimit)
{
    const Unit source('genr'), destination('genr');
    Feeder feeder(canonical(44100, 2));
    ASSERT_EQ(source.setLimit(300), noErr);
    ASSERT_EQ(source.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(connect(source, destination), noErr);
    ASSERT_EQ(AudioUnitInitialize(source), noErr);
    ASSERT_EQ(AudioUnitInitialize(destination), noErr);
    List list(canonical(44100, 2), 1000);
    AudioTimeStamp time = sampleTime(50);
    time.mFlags |= kAudioTimeStampHostTimeValid;
    time.mHostTime = 1000000;
    ASSERT_EQ(AudioUnitRender(destination, nullptr, &time, 0, 1000, list.get()), noErr);
    ASSERT_EQ(feeder.requests.size(), 4u);
    const UInt32 frames[] = {300, 300, 300, 100};
    for (UInt32 i = 0; i < 4; ++i) {
        EXPECT_EQ(feeder.requests[i].frames, frames[i]);
        EXPECT_EQ(feeder.requests[i].time.mSampleTime, 50 + i * 300.0);
        EXPECT_NEAR(static_cast<double>(feeder.requests[i].time.mHostTime),
                    1000000 + i * 300 / 44100.0 * AudioGetHostClockFrequency(), 2);
    }
    for (UInt32 i = 0; i < 1000; ++i) ASSERT_EQ(static_cast<float*>(list[1].mData)[i], noise(50 + i, 1)) << i;
}

TEST(Connection, PassesTheSourcesFailureOn)
{
    Unit source('genr');
    const Unit destination('genr');
    Feeder feeder(canonical(44100, 2));
    ASSERT_EQ(connect(source, destination), noErr);
    ASSERT_EQ(AudioUnitInitialize(destination), noErr);
    List list(canonical(44100, 2), 64);
    const AudioTimeStamp time = sampleTime(0);
    const auto render = [&] {
        list.restore();
        return AudioUnitRender(destination, nullptr, &time, 0, 64, list.get());
    };
    EXPECT_EQ(render(), kAudioUnitErr_Uninitialized) << "the source is not initialised";
    ASSERT_EQ(AudioUnitInitialize(source), noErr);
    EXPECT_EQ(render(), kAudioUnitErr_NoConnection) << "the source has no source";
    ASSERT_EQ(source.setCallback(Feeder::callback, &feeder), noErr);
    EXPECT_EQ(render(), noErr);
    feeder.status = -31;
    EXPECT_EQ(render(), -31);
    EXPECT_EQ(source.get<OSStatus>(kAudioUnitProperty_LastRenderError, 0, 0), -31);
    EXPECT_EQ(destination.get<OSStatus>(kAudioUnitProperty_LastRenderError, 0, 0), -31);
    source.close();
    EXPECT_EQ(render(), kAudioUnitErr_NoConnection) << "the source is closed";
    Feeder own(canonical(44100, 2));
    ASSERT_EQ(destination.setCallback(Feeder::callback, &own), noErr) << "a callback replaces the connection";
    EXPECT_EQ(render(), noErr);
    EXPECT_EQ(own.calls, 1);
}

TEST(Connection, LoopIsRefusedWhenItIsRendered)
{
    const Unit one('genr'), two('genr');
    ASSERT_EQ(connect(one, two), noErr);
    ASSERT_EQ(connect(two, one), noErr);
    ASSERT_EQ(AudioUnitInitialize(one), noErr);
    ASSERT_EQ(AudioUnitInitialize(two), noErr);
    List list(canonical(44100, 2), 64);
    const AudioTimeStamp time = sampleTime(0);
    EXPECT_EQ(AudioUnitRender(one, nullptr, &time, 0, 64, list.get()),
              kAudioUnitErr_CannotDoInCurrentContext);
}

TEST(Connection, FeedsADeviceWithinTheSourcesSliceLimit)
{
    SteppedDevice device(44100, 2, 8192);
    const Unit source('genr'), output('ahal');
    Feeder feeder(canonical(44100, 2));
    ASSERT_EQ(output.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(source.setLimit(1000), noErr);
    ASSERT_EQ(source.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(connect(source, output), noErr);
    ASSERT_EQ(AudioUnitInitialize(source), noErr);
    ASSERT_EQ(AudioUnitInitialize(output), noErr);
    ASSERT_EQ(AudioOutputUnitStart(output), noErr);
    ASSERT_EQ(device.step(8192 * 2), 8192u * 2);
    ASSERT_EQ(device.played.size(), 8192u * 4);
    for (UInt32 i = 0; i < 8192 * 4; ++i) ASSERT_EQ(device.played[i], noise(i / 2, i % 2)) << i;
    for (const Request& request : feeder.requests) ASSERT_LE(request.frames, 1000u);
}

} // namespace
