// Devices that are plugged in, that die, that are unplugged, or that refuse to start.
#include "tests/platform/hal/test_device.h"

namespace {

using namespace haltest;

bool isListed(AudioDeviceID device)
{
    const auto devices =
        getAll<AudioDeviceID>(kAudioObjectSystemObject, address(kAudioHardwarePropertyDevices));
    return std::find(devices.begin(), devices.end(), device) != devices.end();
}

TEST(DeviceLife, SimulatedDeviceAlwaysExists)
{
    const AudioDeviceID device = KVXPlatformBuiltInSimulatedDevice();
    EXPECT_TRUE(isListed(device));
    EXPECT_EQ(defaultOutput(), device) << "the environment names the simulated device";
    EXPECT_EQ(get<UInt32>(device, address(kAudioDevicePropertyDeviceIsAlive)), 1u);
}

TEST(DeviceLife, IDsAreNeverReused)
{
    AudioDeviceID last = 0;
    for (int i = 0; i < 20; ++i) {
        Device device;
        EXPECT_GT(AudioDeviceID{device}, last);
        last = device;
        EXPECT_TRUE(isListed(device));
        device.unplug();
        EXPECT_FALSE(isListed(last));
        UInt32 size = 4, value;
        const auto at = address(kAudioDevicePropertyDeviceIsAlive);
        EXPECT_EQ(AudioObjectGetPropertyData(last, &at, 0, nullptr, &size, &value),
                  kAudioHardwareBadObjectError);
    }
}

TEST(DeviceLife, DeadDeviceStaysListedAndRunsCycles)
{
    for (bool isStepped : {true, false}) {
        SCOPED_TRACE(isStepped ? "stepped" : "paced");
        Device device(isStepped ? Device::stepped() : Device::paced());
        Procedure procedure(device, [](const Call& call) {
            EXPECT_EQ(call.channels(), 2u);
            call.fill(1);
        });
        procedure.start();
        if (isStepped)
            KVXPlatformStep(device, 64);
        else
            waitFor([&] { return procedure.calls() > 0; });
        ASSERT_EQ(KVXPlatformKillDevice(device), 0);
        EXPECT_EQ(get<UInt32>(device, address(kAudioDevicePropertyDeviceIsAlive)), 0u);
        EXPECT_TRUE(isListed(device));
        const int before = procedure.calls();
        // The test does not step the device, so the timer thread must run the cycles.
        waitFor([&] { return procedure.calls() > before + 3; });
        EXPECT_EQ(procedure.stop(), noErr);
        EXPECT_EQ(procedure.remove(), noErr);
    }
}

TEST(DeviceLife, DeadDeviceCanBeStartedAndStopped)
{
    Device device;
    KVXPlatformKillDevice(device);
    Procedure* self = nullptr;
    Procedure procedure(device, [&](const Call&) { self->stop(); });
    self = &procedure;
    EXPECT_EQ(procedure.start(), noErr);
    waitFor([&] { return procedure.calls() > 0; });
    waitFor([&] { return get<UInt32>(device, address(kAudioDevicePropertyDeviceIsRunning)) == 0; });
    EXPECT_EQ(procedure.calls(), 1);
}

TEST(DeviceLife, UnpluggedDeviceRunsUntilItsLastProcedureStops)
{
    Device device;
    Recording recording(device);
    Procedure* self = nullptr;
    std::atomic<bool> mayStop{false}, hasStopped{false};
    Procedure procedure(device, [&](const Call& call) {
        call.fill(1);
        if (!mayStop) return;
        EXPECT_EQ(AudioDeviceStop(call.device, self->id()), noErr);
        EXPECT_EQ(self->remove(), noErr);
        hasStopped = true;
    });
    self = &procedure;
    procedure.start();
    const AudioDeviceID id = device;
    device.unplug();
    EXPECT_FALSE(isListed(id));
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(static_cast<KVXDeviceID>(id)), kAudioHardwareBadDeviceError);
    // Kept now, because procedure.id() is null after removal, and a null ID would start the device itself.
    const AudioDeviceIOProcID ended = procedure.id();
    const int before = procedure.calls();
    waitFor([&] { return procedure.calls() > before + 2; });
    EXPECT_TRUE(recording.samples.empty()) << "its output is discarded";
    mayStop = true;
    waitFor([&] { return hasStopped.load(); });
    // The last removed procedure ends the device.
    waitFor([&] { return AudioDeviceStart(id, ended) == kAudioHardwareBadDeviceError; });
    EXPECT_EQ(liveCount("IOProc"), 0u);
}

TEST(DeviceLife, DefaultMovesWhenItsDeviceEnds)
{
    const AudioDeviceID builtIn = defaultOutput();
    Device device;
    const auto role = address(kAudioHardwarePropertyDefaultOutputDevice);
    ASSERT_EQ(set<AudioDeviceID>(kAudioObjectSystemObject, role, device), noErr);
    EXPECT_EQ(defaultOutput(), AudioDeviceID{device});
    device.unplug();
    EXPECT_EQ(defaultOutput(), builtIn);

    Device mortal;
    ASSERT_EQ(set<AudioDeviceID>(kAudioObjectSystemObject, role, mortal), noErr);
    KVXPlatformKillDevice(mortal);
    EXPECT_EQ(defaultOutput(), builtIn) << "a dead device cannot be the default";
    EXPECT_NE(set<AudioDeviceID>(kAudioObjectSystemObject, role, mortal), noErr);
    EXPECT_NE(set<AudioDeviceID>(kAudioObjectSystemObject, role, 0x7FFFFFFF), noErr);
    EXPECT_EQ(defaultOutput(), builtIn);
}

TEST(DeviceLife, RefusedStartChangesNothing)
{
    Device device;
    Procedure procedure(device, [](const Call&) {});
    ASSERT_EQ(KVXPlatformRefuseStart(device, 'what'), 0);
    EXPECT_EQ(procedure.start(), OSStatus{'what'});
    EXPECT_EQ(get<UInt32>(device, address(kAudioDevicePropertyDeviceIsRunning)), 0u);
    EXPECT_EQ(KVXPlatformStep(device, 64), 0u);
    ASSERT_EQ(KVXPlatformRefuseStart(device, 0), 0);
    EXPECT_EQ(procedure.start(), noErr);
    EXPECT_EQ(KVXPlatformStep(device, 64), 64u);
}

TEST(DeviceLife, IsRunningWhileAProcedureIsStarted)
{
    Device device;
    const auto running = address(kAudioDevicePropertyDeviceIsRunning);
    Procedure a(device, [](const Call&) {}), b(device, [](const Call&) {});
    EXPECT_EQ(get<UInt32>(device, running), 0u);
    a.start();
    b.start();
    EXPECT_EQ(get<UInt32>(device, running), 1u);
    a.stop();
    EXPECT_EQ(get<UInt32>(device, running), 1u);
    b.stop();
    EXPECT_EQ(get<UInt32>(device, running), 0u);
    EXPECT_EQ(get<UInt32>(device, address(kAudioDevicePropertyDeviceIsRunningSomewhere)), 0u);
}

TEST(DeviceLife, BuiltInDeviceCannotEnd)
{
    const KVXDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    for (auto end : {KVXPlatformKillDevice, KVXPlatformRemoveSimulatedDevice}) {
        EXPECT_EQ(end(builtIn), static_cast<int32_t>(kAudioHardwareUnsupportedOperationError));
        EXPECT_STRNE(KVXPlatformErrorText(), "");
    }
    EXPECT_EQ(get<UInt32>(builtIn, address(kAudioDevicePropertyDeviceIsAlive)), 1u);
    EXPECT_EQ(defaultOutput(), builtIn);
}

TEST(DeviceLife, InputDeviceRefusesOutputChannels)
{
    const auto input =
        get<AudioDeviceID>(kAudioObjectSystemObject, address(kAudioHardwarePropertyDefaultInputDevice));
    const auto id = static_cast<KVXDeviceID>(input);
    EXPECT_NE(KVXPlatformConfigureDevice(id, 48000, 2, 0), 0);
    EXPECT_STRNE(KVXPlatformErrorText(), "");
    EXPECT_EQ(get<Float64>(input, address(kAudioDevicePropertyNominalSampleRate)), 44100) << "unchanged";
    EXPECT_EQ(KVXPlatformConfigureDevice(id, 48000, 0, 256), 0) << KVXPlatformErrorText();
}

} // namespace
