// Listeners of devices that end, and listeners that remove each other.
#include "tests/platform/hal/recording_listener.h"

#include <memory>

namespace {

using namespace haltest;

AudioObjectPropertyAddress volume(UInt32 channel)
{
    return address(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeOutput, channel);
}

TEST(ListenerLife, DeathIsNotifiedOnce)
{
    const auto alive = address(kAudioDevicePropertyDeviceIsAlive);
    const struct {
        bool isKilled, isUnplugged;
    } facts[] = {{true, false}, {false, true}, {true, true}};
    for (const auto& fact : facts) {
        Device device;
        RecordingListener exact(device, alive), any(device);
        const auto kill = [&] { KVXPlatformKillDevice(static_cast<KVXDeviceID>(AudioDeviceID{device})); };
        if (fact.isKilled) kill(), kill();
        if (fact.isUnplugged) device.unplug(), device.unplug();
        waitForNotifications();
        EXPECT_EQ(exact.takeReceived(), std::vector<std::string>{"livn glob 0"});
        EXPECT_EQ(any.takeReceived(), std::vector<std::string>{"livn glob 0"});
        EXPECT_EQ(exact.remove(), noErr) << "also of a device that has ended";
        EXPECT_EQ(any.remove(), noErr);
    }
    EXPECT_EQ(liveCount("property listener"), 0u);
}

TEST(ListenerLife, EndedDeviceNotifiesNothingAndAcceptsNoListener)
{
    Device device;
    const AudioDeviceID id = device;
    RecordingListener listener(id);
    device.unplug();
    waitForNotifications();
    EXPECT_EQ(listener.count(), 1);
    Device next; // the new device has another ID than the unplugged one
    set<Float32>(next, volume(1), 0.5f);
    waitForNotifications();
    EXPECT_EQ(listener.count(), 1);
    const auto at = volume(1);
    const auto ignore = [](AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) -> OSStatus {
        return noErr;
    };
    EXPECT_EQ(AudioObjectAddPropertyListener(id, &at, ignore, nullptr), kAudioHardwareBadObjectError);
}

TEST(ListenerLife, DoesNotReceiveEarlierChanges)
{
    Device device;
    std::atomic<bool> mayGoOn{false}, isHeld{false};
    RecordingListener slow(device, volume(1), [&] {
        isHeld = true;
        waitFor([&] { return mayGoOn.load(); });
    });
    set<Float32>(device, volume(1), 0.5f);
    waitFor([&] { return isHeld.load(); });
    // This change is queued after the change whose listener is still held.
    set<Float32>(device, volume(2), 0.5f);
    RecordingListener late(device, volume(anyElement));
    set<Float32>(device, volume(1), 0.25f);
    mayGoOn = true;
    waitForNotifications();
    EXPECT_EQ(late.takeReceived(), std::vector<std::string>{"volm outp 1"});
}

TEST(ListenerLife, MayRemoveTheNextListenerInItsCall)
{
    Device device;
    std::unique_ptr<RecordingListener> second;
    RecordingListener first(device, volume(1), [&] { EXPECT_EQ(second->remove(), noErr); });
    second = std::make_unique<RecordingListener>(device, volume(1));
    set<Float32>(device, volume(1), 0.5f);
    waitForNotifications();
    EXPECT_EQ(first.count(), 1);
    EXPECT_EQ(second->count(), 0) << "listeners are called in the order of registration";
}

TEST(ListenerLife, AddedInACallReceivesTheNextChange)
{
    Device device;
    std::unique_ptr<RecordingListener> added;
    RecordingListener first(device, volume(1), [&] {
        if (!added) added = std::make_unique<RecordingListener>(device, volume(1));
    });
    set<Float32>(device, volume(1), 0.5f);
    waitForNotifications();
    ASSERT_TRUE(added);
    EXPECT_EQ(added->count(), 0);
    set<Float32>(device, volume(1), 0.25f);
    waitForNotifications();
    EXPECT_EQ(added->count(), 1);
    EXPECT_EQ(first.count(), 2);
}

TEST(ListenerLife, IsCalledOnceForEachRegistration)
{
    Device device;
    static std::atomic<int> calls;
    calls = 0;
    const auto count = [](AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) -> OSStatus {
        ++calls;
        return 'what'; // the platform ignores a listener's status
    };
    const auto at = volume(1);
    for (int i = 0; i < 3; ++i) ASSERT_EQ(AudioObjectAddPropertyListener(device, &at, count, &calls), noErr);
    float level = 1;
    for (int expected : {3, 3 + 2, 3 + 2 + 1}) {
        set<Float32>(device, volume(1), level -= 0.125f);
        waitForNotifications();
        EXPECT_EQ(calls, expected);
        EXPECT_EQ(AudioObjectRemovePropertyListener(device, &at, count, &calls), noErr)
            << "one registration at a time";
    }
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &at, count, &calls), noErr) << "none is left";
}

// Three threads change properties while a fourth thread adds and removes listeners.
TEST(ListenerLife, RemainingListenersReceiveEveryChange)
{
    constexpr int changers = 3, changes = 1000, remaining = 20;
    std::vector<std::unique_ptr<Device>> devices;
    std::vector<std::unique_ptr<RecordingListener>> listeners;
    for (int i = 0; i < changers; ++i) devices.push_back(std::make_unique<Device>());
    for (int i = 0; i < remaining; ++i)
        listeners.push_back(
            std::make_unique<RecordingListener>(*devices[static_cast<std::size_t>(i % changers)], volume(1)));
    std::atomic<int> changing{changers};
    std::vector<std::thread> threads;
    for (int i = 0; i < changers; ++i)
        threads.emplace_back([&, i] {
            for (int n = 0; n < changes; ++n)
                set<Float32>(*devices[static_cast<std::size_t>(i)], volume(1), n % 2 ? 0.5f : 0.25f);
            --changing;
        });
    while (changing) {
        std::atomic<bool> isRemoved{false}, hasErred{false};
        RecordingListener passing(*devices[0], volume(1), [&] {
            if (isRemoved) hasErred = true;
        });
        passing.remove();
        isRemoved = true;
        EXPECT_FALSE(hasErred);
    }
    for (std::thread& thread : threads) thread.join();
    waitForNotifications();
    for (const auto& listener : listeners) EXPECT_EQ(listener->count(), changes);
    listeners.clear();
    EXPECT_EQ(liveCount("property listener"), 0u);
}

} // namespace
