// Tests that no callback runs after a stop from any thread or from inside a callback.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/fragile.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/support/live_objects.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

using namespace test;

TEST(Stop, NoCallbackRunsAfterAStop)
{
    SteppedDevice device(48000, 2, 16, false);
    const Unit unit('ahal');
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    for (int round = 0; round < 300; ++round) {
        auto fragile = std::make_unique<Fragile>();
        ASSERT_EQ(unit.setCallback(Fragile::callback, fragile.get()), noErr);
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
        while (fragile->calls < round % 3) std::this_thread::yield();
        ASSERT_EQ(AudioOutputUnitStop(unit), noErr);
        ASSERT_FALSE(fragile->isInside);
    }
}

TEST(Stop, NoCallbackRunsAfterAClose)
{
    SteppedDevice device(48000, 2, 16, false);
    for (int round = 0; round < 300; ++round) {
        Fragile fragile;
        Unit unit('ahal');
        ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
        ASSERT_EQ(unit.setCallback(Fragile::callback, &fragile), noErr);
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
        while (fragile.calls < round % 3) std::this_thread::yield();
        ASSERT_EQ(round % 2 ? unit.close() : static_cast<OSErr>(AudioUnitUninitialize(unit)), noErr);
        ASSERT_FALSE(fragile.isInside);
    }
}

struct StopsItself {
    const Unit* unit;
    int at, calls = 0;
    bool closes;
    static OSStatus callback(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32,
                             UInt32 frames, AudioBufferList* list)
    {
        auto& self = *static_cast<StopsItself*>(context);
        for (UInt32 i = 0; i < frames; ++i) static_cast<float*>(list->mBuffers[0].mData)[i] = 0.5f;
        if (++self.calls == self.at) {
            EXPECT_EQ(self.closes ? OSStatus{const_cast<Unit*>(self.unit)->close()}
                                  : AudioOutputUnitStop(*self.unit),
                      noErr);
        }
        return noErr;
    }
};

TEST(Stop, InsideACallbackTakesEffectAfterThatSlice)
{
    SteppedDevice device(48000, 1, 100);
    const Unit unit('ahal');
    StopsItself stopper{&unit, 3, 0, false};
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setFormat(1, canonical(48000, 1)), noErr);
    ASSERT_EQ(unit.setCallback(StopsItself::callback, &stopper), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    for (int round = 0; round < 20; ++round) {
        stopper.calls = 0;
        device.played.clear();
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
        EXPECT_EQ(device.step(1000), 300u) << "the device stops with its last procedure";
        EXPECT_EQ(stopper.calls, 3);
        EXPECT_EQ(device.played, std::vector<float>(300, 0.5f)) << "the last slice is played";
        EXPECT_EQ(unit.get<UInt32>(2001, 0, 0), 0u);
        if (round % 2) {
            ASSERT_EQ(AudioOutputUnitStop(unit), noErr);
        }
    }
}

OSStatus stopsAndStarts(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                        AudioBufferList*)
{
    const auto& unit = *static_cast<const Unit*>(context);
    EXPECT_EQ(AudioOutputUnitStart(unit), noErr) << "already running";
    EXPECT_EQ(AudioOutputUnitStop(unit), noErr);
    EXPECT_EQ(AudioOutputUnitStart(unit), kAudioUnitErr_CannotDoInCurrentContext);
    EXPECT_EQ(AudioUnitUninitialize(unit), kAudioUnitErr_CannotDoInCurrentContext);
    return noErr;
}

TEST(Stop, InsideACallbackRefusesAStartThere)
{
    SteppedDevice device(48000, 2, 100);
    const Unit unit('ahal');
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setCallback(stopsAndStarts, const_cast<Unit*>(&unit)), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    EXPECT_EQ(device.step(1000), 100u);
    EXPECT_EQ(unit.get<UInt32>(2001, 0, 0), 0u);
    EXPECT_TRUE(eventually([] { return support::liveObjects("IOProc") == 0; })) << "removed soon";
}

TEST(Stop, InsideACallbackEndsThePullsOfThatSlice)
{
    // In each slice of the output unit, the callback of the source unit is called about ten times, at another
    // rate.
    SteppedDevice device(48000, 1, 1000);
    const Unit source('genr'), output('ahal');
    StopsItself stopper{&output, 2, 0, false};
    ASSERT_EQ(source.setFormat(1, canonical(44100, 1)), noErr);
    ASSERT_EQ(source.setFormat(2, canonical(44100, 1)), noErr);
    ASSERT_EQ(source.setLimit(100), noErr);
    ASSERT_EQ(source.setCallback(StopsItself::callback, &stopper), noErr);
    ASSERT_EQ(output.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(output.set(kAudioUnitProperty_MakeConnection, 1, 0, AudioUnitConnection{source, 0, 0}), noErr);
    ASSERT_EQ(AudioUnitInitialize(source), noErr);
    ASSERT_EQ(AudioUnitInitialize(output), noErr);
    ASSERT_EQ(AudioOutputUnitStart(output), noErr);
    EXPECT_EQ(device.step(5000), 1000u);
    EXPECT_EQ(stopper.calls, 2);
    EXPECT_NEAR(device.played[50], 0.5f, 0.05);
    EXPECT_NEAR(device.played[300], 0.0f, 0.05) << "silence after the last call";
}

TEST(Stop, InsideACallbackSilencesTheRestOfTheSlice)
{
    SteppedDevice device(48000, 1, 1000);
    const Unit unit('ahal');
    StopsItself stopper{&unit, 2, 0, false};
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setFormat(1, canonical(48000, 1)), noErr);
    ASSERT_EQ(unit.setLimit(100), noErr);
    ASSERT_EQ(unit.setCallback(StopsItself::callback, &stopper), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    device.step(1000);
    EXPECT_EQ(stopper.calls, 2) << "not called for the rest of the slice";
    EXPECT_EQ(device.played[199], 0.5f);
    EXPECT_EQ(device.played[200], 0.0f);
}

TEST(Stop, CloseInsideACallbackFreesTheUnitLater)
{
    SteppedDevice device(48000, 1, 100);
    for (int round = 0; round < 20; ++round) {
        Unit unit('ahal');
        StopsItself stopper{&unit, 1, 0, true};
        ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
        ASSERT_EQ(unit.setFormat(1, canonical(48000, 1)), noErr);
        ASSERT_EQ(unit.setCallback(StopsItself::callback, &stopper), noErr);
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
        EXPECT_EQ(device.step(1000), 100u);
        EXPECT_EQ(stopper.calls, 1);
    }
    EXPECT_TRUE(eventually([] { return support::liveObjects("ComponentInstance") == 0; }))
        << "a unit is freed after its slice";
    EXPECT_EQ(support::liveObjects("IOProc"), 0u);
}

OSStatus stops(void* unit, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
               AudioBufferList*)
{
    EXPECT_EQ(AudioOutputUnitStop(*static_cast<Unit*>(unit)), noErr);
    return noErr;
}

OSStatus stopsAndCloses(void* unit, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                        AudioBufferList*)
{
    EXPECT_EQ(AudioOutputUnitStop(*static_cast<Unit*>(unit)), noErr);
    EXPECT_EQ(static_cast<Unit*>(unit)->close(), noErr);
    return noErr;
}

TEST(Stop, InsideACallbackThenCloseLeavesNoProcedure)
{
    SteppedDevice device(48000, 2, 100);
    for (int round = 0; round < 20; ++round) {
        const bool closesInside = round % 2;
        Unit unit('ahal');
        ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
        ASSERT_EQ(unit.setCallback(closesInside ? stopsAndCloses : stops, &unit), noErr);
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
        EXPECT_EQ(device.step(1000), 100u);
        if (closesInside) {
            EXPECT_TRUE(eventually([] { return support::liveObjects("IOProc") == 0; }));
        } else {
            ASSERT_EQ(unit.close(), noErr);
            EXPECT_EQ(support::liveObjects("IOProc"), 0u) << "removed when the close returns";
        }
    }
    EXPECT_TRUE(eventually([] { return support::liveObjects("property listener") == 0; }));
}

TEST(Stop, FromTwoThreadsAndTheCallbackAtOnce)
{
    SteppedDevice device(48000, 1, 16, false);
    const Unit unit('ahal');
    StopsItself stopper{&unit, 5, 0, false};
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setFormat(1, canonical(48000, 1)), noErr);
    ASSERT_EQ(unit.setCallback(StopsItself::callback, &stopper), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    for (int round = 0; round < 100; ++round) {
        stopper.calls = 0;
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
        std::thread other([&] { AudioOutputUnitStop(unit); });
        if (round % 2) std::this_thread::sleep_for(std::chrono::microseconds(round * 20));
        AudioOutputUnitStop(unit);
        other.join();
        ASSERT_LE(stopper.calls, 5);
    }
}

} // namespace
