// Start, and the hardware's format: the platform calls, the order of the calls, and the state after a refused
// call.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/device_spy.h"

#include <gtest/gtest.h>

namespace {

using spy::Calls;
using test::PlayerObject;

// Platform calls as the spy records them. Device 2 is the default output device.
const std::string askDefaultDevice = "AudioHardwareGetProperty('dOut', 4 bytes)";
const std::string askFormat = "AudioDeviceGetProperty(2, channel 0, output, 'sfmt', 40 bytes)";
const std::string add = "AudioDeviceAddIOProc(2, procedure, player)";
const std::string startDevice = "AudioDeviceStart(2, procedure)";
const Calls wholeStart = {askDefaultDevice, askFormat, add, startDevice};

class PlayerTransport : public test::FreshPlatform {
protected:
    static void nameForSpy(const PlayerObject& object)
    {
        spy::name(reinterpret_cast<const void*>(object->ioProc), "procedure");
        spy::name(&object.data(), "player");
    }

    static float hardwareRate(const PlayerObject& object)
    {
        return test::members.call<float>("HardwareSampleRate", object);
    }
    static HostInteger hardwareChannels(const PlayerObject& object)
    {
        return test::members.call<HostInteger>("HardwareNumberOfChannels", object);
    }
};

// ---- start ----

TEST_F(PlayerTransport, StartCallsThePlatformInThisOrder)
{
    const PlayerObject object;
    nameForSpy(object);
    EXPECT_EQ(test::members.call<HostBoolean>("Start", object), 1);
    EXPECT_EQ(spy::calls(), wholeStart);
    EXPECT_EQ(object->isRunning, 1);
    EXPECT_EQ(object->deviceSampleRate, 44100.0f);
    ASSERT_EQ(device_spy::installed().size(), 1u);
    EXPECT_TRUE(device_spy::installed()[0].isStarted);
    EXPECT_EQ(device_spy::installed()[0].client, &object.data());
}

TEST_F(PlayerTransport, StartReadsTheDevicesRate)
{
    for (const double rate : {8000.0, 48000.0, 96000.0, 44100.5, 0.0}) {
        device_spy::reset();
        device_spy::platform().streamFormat.mSampleRate = rate;
        const PlayerObject object;
        EXPECT_TRUE(object.start());
        EXPECT_EQ(object->deviceSampleRate, static_cast<float>(rate));
        EXPECT_EQ(object->sampleRate, 44100.0f);
    }
}

TEST_F(PlayerTransport, AnExplicitDeviceIsUsedWithoutReadingTheDefault)
{
    device_spy::platform().streamFormatOf[7].mSampleRate = 32000;
    const PlayerObject object;
    nameForSpy(object);
    test::members.set<HostInteger>(object, "OutputDeviceID", 7);
    EXPECT_TRUE(object.start());
    EXPECT_EQ(spy::calls(),
              (Calls{"AudioDeviceGetProperty(7, channel 0, output, 'sfmt', 40 bytes)",
                     "AudioDeviceAddIOProc(7, procedure, player)", "AudioDeviceStart(7, procedure)"}));
    EXPECT_EQ(object->deviceSampleRate, 32000.0f);
}

TEST_F(PlayerTransport, TheDefaultDeviceIsNotStored)
{
    device_spy::platform().defaultOutputDevice = 41;
    const PlayerObject object;
    nameForSpy(object);
    EXPECT_TRUE(object.start());
    EXPECT_EQ(object->outputDeviceID, 0u);
    EXPECT_EQ(test::members.get<HostInteger>(object, "OutputDeviceID"), 0);
    test::render(object, 4); // without data the player stops

    device_spy::platform().defaultOutputDevice = 42;
    spy::forgetCalls();
    EXPECT_TRUE(object.start());
    EXPECT_EQ(spy::calls().back(), "AudioDeviceStart(42, procedure)")
        << "the next start reads the default again";
}

TEST_F(PlayerTransport, StartOnARunningPlayerReturnsTrueAndChangesNothing)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3, 4, 5}));
    ASSERT_TRUE(object.start());
    test::render(object, 3);
    spy::answer("AudioDeviceStart").status = kAudioHardwareUnspecifiedError;
    spy::forgetCalls();
    EXPECT_EQ(test::members.call<HostBoolean>("Start", object), 1);
    EXPECT_EQ(spy::calls(), Calls());
    EXPECT_EQ(object->outputPosition, 3.0);
    EXPECT_EQ(object->outputPositionRelative, 3.0);
}

TEST_F(PlayerTransport, EveryRefusalEndsTheStart)
{
    const struct {
        std::string refusing;
        Calls calls;
        bool isRunning;
        const char* why;
    } rows[] = {
        {"AudioHardwareGetProperty", {askDefaultDevice}, false, "no default device"},
        {"AudioDeviceGetProperty", {askDefaultDevice, askFormat}, false, "no format"},
        {"AudioDeviceAddIOProc", {askDefaultDevice, askFormat, add}, false, "no procedure"},
        {"AudioDeviceStart", wholeStart, true, "the procedure is installed: only it can remove itself"},
    };
    for (const auto& row : rows)
        for (const OSStatus status : {OSStatus{kAudioHardwareUnspecifiedError}, OSStatus{-1}, OSStatus{1}}) {
            SCOPED_TRACE(row.why);
            device_spy::reset();
            spy::answer(row.refusing).status = status;
            device_spy::platform().streamFormat.mSampleRate = 96000;
            const PlayerObject object;
            nameForSpy(object);
            ASSERT_TRUE(object.add({1, 2}));
            object->outputPosition = 5;
            object->outputPositionRelative = 6;
            object->baseSampleIndex = 7;

            EXPECT_EQ(test::members.call<HostBoolean>("Start", object), 0);
            EXPECT_EQ(spy::calls(), row.calls);
            EXPECT_EQ(object->isRunning, row.isRunning);
            EXPECT_EQ(object->outputPosition, 0.0) << "positions are reset first";
            EXPECT_EQ(object->outputPositionRelative, 0.0);
            EXPECT_EQ(object->baseSampleIndex, 0);
            EXPECT_EQ(object->queueCount, 1) << "the waiting buffer stays";
            EXPECT_EQ(object->outputDeviceID, 0u);
            const bool isRateKnown =
                row.refusing == "AudioDeviceAddIOProc" || row.refusing == "AudioDeviceStart";
            EXPECT_EQ(object->deviceSampleRate, isRateKnown ? 96000.0f : 44100.0f);
        }
}

TEST_F(PlayerTransport, AfterARefusalTheNextStartTriesAgain)
{
    const PlayerObject object;
    nameForSpy(object);
    spy::answer("AudioDeviceAddIOProc").status = kAudioHardwareIllegalOperationError;
    EXPECT_FALSE(object.start());
    spy::script().answers.clear();
    spy::forgetCalls();
    EXPECT_TRUE(object.start());
    EXPECT_EQ(spy::calls(), wholeStart);
}

// It is intended that the player counts as running, because isRunning must be set before the device is
// started.
TEST_F(PlayerTransport, AfterARefusedDeviceStartThePlayerCountsAsRunning)
{
    const PlayerObject object;
    spy::answer("AudioDeviceStart").status = kAudioHardwareUnspecifiedError;
    EXPECT_FALSE(object.start());
    EXPECT_EQ(test::members.get<HostBoolean>(object, "IsRunning"), 1);
    ASSERT_EQ(device_spy::installed().size(), 1u);
    EXPECT_FALSE(device_spy::installed()[0].isStarted);
    spy::forgetCalls();
    EXPECT_TRUE(object.start()) << "isRunning is set";
    EXPECT_EQ(spy::calls(), Calls());
}

TEST_F(PlayerTransport, IsRunningIsSetBeforeTheDeviceStarts)
{
    const PlayerObject object;
    int whileAdding = -1, whileStarting = -1;
    spy::answer("AudioDeviceAddIOProc").during = [&] { whileAdding = object->isRunning; };
    spy::answer("AudioDeviceStart").during = [&] { whileStarting = object->isRunning; };
    EXPECT_TRUE(object.start());
    EXPECT_EQ(whileAdding, 0);
    EXPECT_EQ(whileStarting, 1);
}

// A device may run its first I/O cycle before AudioDeviceStart returns. Here this cycle has no data.
TEST_F(PlayerTransport, ACycleInsideTheStartMayStopThePlayer)
{
    const PlayerObject object;
    spy::answer("AudioDeviceStart").during = [&] { test::render(object, 4); };
    EXPECT_TRUE(object.start());
    EXPECT_EQ(object->isRunning, 0);
}

TEST_F(PlayerTransport, RestartResetsPositionsAndKeepsTheBuffers)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3, 4}));
    ASSERT_TRUE(object.add({5, 6, 7, 8}));
    ASSERT_TRUE(object.start());
    test::render(object, 5);
    ASSERT_EQ(object->baseSampleIndex, 4);
    object->stopRequested = 1; // a stop by the I/O procedure, which keeps the buffers
    test::render(object, 1);
    ASSERT_EQ(object->isRunning, 0);
    object->stopRequested = 0;
    ASSERT_TRUE(object.add({9}));

    EXPECT_TRUE(object.start());
    EXPECT_EQ(object->outputPosition, 0.0);
    EXPECT_EQ(object->outputPositionRelative, 0.0);
    EXPECT_EQ(object->baseSampleIndex, 0);
    EXPECT_EQ(object.current(), (std::vector<float>{5, 6, 7, 8}));
    EXPECT_EQ(object->queueCount, 1);
    EXPECT_EQ(test::render(object, 5), (std::vector<float>{5, 6, 7, 8, 9}))
        << "the current buffer starts at its first sample";
}

// ---- the hardware's format ----

TEST_F(PlayerTransport, HardwareFormatIsTheDefaultDevices)
{
    device_spy::platform().streamFormat.mSampleRate = 88200;
    device_spy::platform().streamFormat.mChannelsPerFrame = 6;
    const PlayerObject object;
    EXPECT_EQ(hardwareRate(object), 88200.0f);
    EXPECT_EQ(spy::calls(), (Calls{askDefaultDevice, askFormat}));
    spy::forgetCalls();
    EXPECT_EQ(hardwareChannels(object), 6);
    EXPECT_EQ(spy::calls(), (Calls{askDefaultDevice, askFormat}));
}

TEST_F(PlayerTransport, HardwareFormatIsTheDefaultDevicesEvenWithAnExplicitDevice)
{
    device_spy::platform().streamFormatOf[7].mSampleRate = 32000;
    device_spy::platform().streamFormatOf[7].mChannelsPerFrame = 8;
    const PlayerObject object;
    test::members.set<HostInteger>(object, "OutputDeviceID", 7);
    EXPECT_EQ(hardwareRate(object), 44100.0f);
    EXPECT_EQ(hardwareChannels(object), 2);
    EXPECT_EQ(spy::calls(), (Calls{askDefaultDevice, askFormat, askDefaultDevice, askFormat}));
    ASSERT_TRUE(object.start());
    EXPECT_EQ(hardwareRate(object), 44100.0f) << "also while a player runs";
    EXPECT_EQ(object->deviceSampleRate, 32000.0f);
}

TEST_F(PlayerTransport, HardwareRateIsRoundedToSingle)
{
    device_spy::platform().streamFormat.mSampleRate = 44100.0001;
    const PlayerObject object;
    EXPECT_EQ(hardwareRate(object), 44100.0f);
}

TEST_F(PlayerTransport, HardwareFormatIsZeroOnAnyFailure)
{
    const PlayerObject object;
    for (const std::string refusing : {"AudioHardwareGetProperty", "AudioDeviceGetProperty"}) {
        device_spy::reset();
        spy::answer(refusing).status = kAudioHardwareUnspecifiedError;
        EXPECT_EQ(hardwareRate(object), 0.0f);
        EXPECT_EQ(hardwareChannels(object), 0);
        EXPECT_EQ(spy::calls(), refusing == "AudioHardwareGetProperty"
                                    ? (Calls{askDefaultDevice, askDefaultDevice})
                                    : (Calls{askDefaultDevice, askFormat, askDefaultDevice, askFormat}));
    }
    EXPECT_EQ(object->deviceSampleRate, 44100.0f);
}

} // namespace
