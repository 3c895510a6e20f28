// Which changes a listener receives, on which thread it is called, and when its last call ends.
#include "tests/platform/hal/recording_listener.h"

namespace {

using namespace haltest;

AudioObjectPropertyAddress volume(UInt32 channel)
{
    return address(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeOutput, channel);
}

TEST(Listeners, ReceiveMatchingChanges)
{
    Device device;
    const AudioObjectID id = device;
    const struct {
        AudioObjectPropertyAddress watched;
        bool isReceived;
        const char* why;
    } facts[] = {
        {volume(1), true, "this address"},
        {volume(2), false, "another channel"},
        {volume(anyElement), true, "any channel"},
        {address(kAudioDevicePropertyMute, kAudioDevicePropertyScopeOutput, 1), false, "another property"},
        {address(anySelector, kAudioDevicePropertyScopeOutput, 1), true, "any property"},
        {address(kAudioDevicePropertyVolumeScalar, anyScope, 1), true, "any scope"},
        {address(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeInput, 1), false,
         "the other side"},
        {address(anySelector, anyScope, anyElement), true, "any change"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        RecordingListener listener(id, fact.watched);
        const float before = get<Float32>(id, volume(1));
        ASSERT_EQ(set<Float32>(id, volume(1), before == 0.5f ? 0.25f : 0.5f), noErr);
        const auto mute = address(kAudioDevicePropertyMute, kAudioDevicePropertyScopeOutput, 0);
        ASSERT_EQ(set<UInt32>(id, mute, !get<UInt32>(id, mute)), noErr);
        waitForNotifications();
        const auto received = listener.takeReceived();
        const auto isVolume = [](const std::string& at) { return at.substr(0, 4) == "volm"; };
        EXPECT_EQ(std::count_if(received.begin(), received.end(), isVolume), fact.isReceived ? 1 : 0);
    }
}

TEST(Listeners, AreCalledOnAThreadOfThePlatform)
{
    Device device;
    RecordingListener listener(device, volume(1));
    set<Float32>(device, volume(1), 0.5f);
    waitFor([&] { return listener.count() == 1; });
    EXPECT_FALSE(listener.wasCalledHere());
}

TEST(Listeners, DoNotReceiveUnchangedValues)
{
    Device device;
    RecordingListener listener(device, address(anySelector, anyScope, anyElement));
    set<Float32>(device, volume(1), 1.0f); // the volume has this value already
    set<UInt32>(device, address(kAudioDevicePropertyBufferFrameSize), 64);
    set<Float32>(device, volume(2), 0.5f);
    waitFor([&] { return listener.count() > 0; });
    for (const std::string& at : listener.takeReceived()) EXPECT_EQ(at.back(), '2') << at;
}

TEST(Listeners, ReceiveChangesOfTheListAndOfADevicesState)
{
    const auto devices = address(kAudioHardwarePropertyDevices);
    RecordingListener list(kAudioObjectSystemObject, devices);
    Device device;
    waitFor([&] { return list.count() == 1; });
    RecordingListener alive(device, address(kAudioDevicePropertyDeviceIsAlive));
    RecordingListener running(device, address(kAudioDevicePropertyDeviceIsRunning));
    {
        Procedure procedure(device, [](const Call&) {});
        procedure.start();
        waitFor([&] { return running.count() == 1; });
        procedure.stop();
        waitFor([&] { return running.count() == 2; });
    }
    KVXPlatformKillDevice(device);
    waitFor([&] { return alive.count() == 1; });
    device.unplug();
    waitFor([&] { return list.count() == 2; });
    EXPECT_EQ(alive.remove(), noErr) << "a listener of an ended device can be removed";
    EXPECT_EQ(alive.count(), 1) << "one notification of its death";
}

TEST(Listeners, ReceiveNewDefaultDevices)
{
    const auto role = address(kAudioHardwarePropertyDefaultOutputDevice);
    Device device;
    RecordingListener listener(kAudioObjectSystemObject, role);
    set<AudioDeviceID>(kAudioObjectSystemObject, role, device);
    waitFor([&] { return listener.count() == 1; });
    device.unplug();
    waitFor([&] { return listener.count() == 2; });
}

TEST(Listeners, MayRemoveThemselvesInTheirOwnCall)
{
    Device device;
    RecordingListener* self = nullptr;
    RecordingListener once(device, volume(1), [&] { EXPECT_EQ(self->remove(), noErr); });
    self = &once;
    RecordingListener always(device, volume(1));
    for (float value : {0.1f, 0.2f, 0.3f}) set<Float32>(device, volume(1), value);
    waitFor([&] { return always.count() == 3; });
    EXPECT_EQ(once.count(), 1);
}

TEST(Listeners, AreNotCalledAfterRemoval)
{
    Device device;
    std::atomic<bool> mustEnd{false};
    std::thread busy([&] {
        for (float value = 0; !mustEnd; value = value < 1 ? value + 0.125f : 0)
            set<Float32>(device, volume(1), value);
    });
    for (int i = 0; i < 200; ++i) {
        std::atomic<bool> isRemoved{false}, hasErred{false};
        RecordingListener listener(device, volume(1), [&] {
            if (isRemoved) hasErred = true;
        });
        if (i % 4 == 0) waitFor([&] { return listener.count() > 0; });
        listener.remove();
        isRemoved = true;
        EXPECT_FALSE(hasErred);
    }
    mustEnd = true;
    busy.join();
    EXPECT_EQ(liveCount("property listener"), 0u);
}

TEST(Listeners, MaySetTheirOwnProperty)
{
    Device device;
    RecordingListener listener(device, volume(1), [&] {
        const float value = get<Float32>(device, volume(1));
        if (value > 0.5f) set<Float32>(device, volume(1), value - 0.0625f);
    });
    set<Float32>(device, volume(1), 0.75f);
    waitFor([&] { return get<Float32>(device, volume(1)) == 0.5f; });
}

OSStatus ignore(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) { return noErr; }

TEST(Listeners, RefuseMisuse)
{
    Device device;
    const AudioObjectID none = 0x7FFFFFFF;
    const auto at = volume(1), other = volume(2);
    int a = 0, b = 0;
    EXPECT_EQ(AudioObjectAddPropertyListener(none, &at, ignore, &a), kAudioHardwareBadObjectError);
    EXPECT_NE(AudioObjectAddPropertyListener(device, nullptr, ignore, &a), noErr);
    EXPECT_NE(AudioObjectAddPropertyListener(device, &at, nullptr, &a), noErr);
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &at, ignore, &a), noErr) << "never added";
    ASSERT_EQ(AudioObjectAddPropertyListener(device, &at, ignore, &a), noErr);
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &other, ignore, &a), noErr) << "all four must match";
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &at, ignore, &b), noErr);
    EXPECT_NE(AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &at, ignore, &a), noErr);
    EXPECT_EQ(AudioObjectRemovePropertyListener(device, &at, ignore, &a), noErr);
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &at, ignore, &a), noErr) << "only once";
}

} // namespace
