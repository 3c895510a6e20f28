// Tests that an output unit that cannot be attached to a device leaves no listener and no I/O procedure on
// the device.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/support/live_objects.h"

#include <gtest/gtest.h>

namespace {

using namespace test;
using support::liveObjects;

constexpr OSStatus refusal = kAudioHardwareUnspecifiedError;

void expectNothingRegistered()
{
    EXPECT_EQ(liveObjects("property listener"), 0u);
    EXPECT_EQ(liveObjects("IOProc"), 0u);
}

void refuseStart(SteppedDevice& device, const Unit&)
{
    EXPECT_EQ(KVXPlatformRefuseStart(device.id(), refusal), 0);
}

void setDistantRate(SteppedDevice&, const Unit& unit)
{
    EXPECT_EQ(unit.setFormat(1, canonical(1, 2)), noErr);
}

void enableInputAtAnotherRate(SteppedDevice&, const Unit& unit)
{
    EXPECT_EQ(unit.set<UInt32>(kAudioOutputUnitProperty_EnableIO, 1, 1, 1), noErr);
    EXPECT_EQ(unit.setFormat(2, canonical(48000, 2), 1), noErr);
}

void removeDevice(SteppedDevice& device, const Unit&) { device.remove(); }

TEST(AttachFailure, LeavesNothingAfterARefusedStart)
{
    const struct {
        void (*spoil)(SteppedDevice&, const Unit&);
        OSStatus status;
        const char* why;
    } facts[] = {
        {refuseStart, refusal, "the device refuses to start"},
        {setDistantRate, kAudioUnitErr_FormatNotSupported, "the rates are too far apart"},
        {enableInputAtAnotherRate, kAudioUnitErr_FormatNotSupported, "the input's rate is not converted"},
        {removeDevice, kAudioHardwareBadObjectError, "the device is gone"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        SteppedDevice device(44100, 2, 64);
        {
            const Unit unit('ahal');
            ASSERT_EQ(unit.set(kAudioOutputUnitProperty_CurrentDevice, 0, 0, device.id()), noErr);
            fact.spoil(device, unit);
            ASSERT_EQ(AudioUnitInitialize(unit), noErr);
            EXPECT_EQ(AudioOutputUnitStart(unit), fact.status);
            EXPECT_EQ(AudioOutputUnitStart(unit), fact.status) << "again";
            EXPECT_EQ(liveObjects("property listener"), 2u) << "on the system's default devices only";
            EXPECT_EQ(liveObjects("IOProc"), 0u);
        }
        expectNothingRegistered();
    }
}

TEST(AttachFailure, LeavesNothingAfterAFailedMove)
{
    SteppedDevice first(44100, 2, 64), second(44100, 2, 64);
    refuseStart(second, Unit('ahal'));
    {
        const Unit unit('ahal');
        Feeder feeder(canonical(44100, 2));
        ASSERT_EQ(unit.set(kAudioOutputUnitProperty_CurrentDevice, 0, 0, first.id()), noErr);
        ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
        ASSERT_EQ(first.step(64), 64u);
        EXPECT_EQ(unit.set(kAudioOutputUnitProperty_CurrentDevice, 0, 0, second.id()), refusal);
    }
    expectNothingRegistered();
}

TEST(AttachFailure, LeavesNothingWhenTheDefaultDeviceRefuses)
{
    SteppedDevice first(44100, 2, 64), second(44100, 2, 64);
    first.makeDefault();
    refuseStart(second, Unit('def '));
    {
        const Unit unit('def ');
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
        second.makeDefault();
        EXPECT_TRUE(
            eventually([&] { return unit.get<UInt32>(kAudioOutputUnitProperty_IsRunning, 0, 0) == 0; }));
    }
    expectNothingRegistered();
}

} // namespace
