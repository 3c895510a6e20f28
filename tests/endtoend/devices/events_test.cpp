// Events of the listeners in a host program: lost devices, unknown objects, and many changes from several
// threads.
#include "tests/endtoend/audio_objects.h"
#include "tests/endtoend/loaded_host.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

using namespace endtoend;

using DeviceEvents = LoadedHostTest;
using host::MemoryBlock;
using host::Object;

TEST_F(DeviceEvents, UnpluggedDeviceDiesOnceAndItsPlayerStopsWithoutHanging)
{
    const AudioObjects audio(loaded.host);
    const EventCount devices(loaded.host, kAudioObjectSystemObject, overall('dev#'));
    const EventCount role(loaded.host, kAudioObjectSystemObject, overall('dOut'));
    const std::int64_t builtIn = KVXPlatformBuiltInSimulatedDevice();
    const KVXDeviceID device = addPacedDevice();
    audio.set<AudioDeviceID>(kAudioObjectSystemObject, overall('dOut'), device);
    const EventCount alive(loaded.host, device, overall('livn'));
    const EventCount running(loaded.host, device, overall('goin'));

    Object player = loaded.host.create(playerClass);
    player.set("NoUnderflow", true);
    ASSERT_TRUE(player.call("PlayFloatAudio", MemoryBlock::copyOf(std::vector<float>(100, 0.25f))).boolean());
    running.waitForEvents(1);
    ASSERT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
    alive.waitForEvents(1);
    role.waitForEvents(2);

    // After the loss of a device, properties, other devices and other players still work.
    (void)audio.object.call("AudioDeviceGetPropertyMemory", std::int64_t(device), 0, false, "nsrt");
    EXPECT_EQ(audio.status(), "!dev");
    EXPECT_EQ(audio.get<AudioDeviceID>(kAudioObjectSystemObject, overall('dOut')), AudioDeviceID(builtIn));
    Object other = loaded.host.create(playerClass);
    EXPECT_TRUE(other.call("PlayFloatAudio", MemoryBlock::copyOf(std::vector<float>(2000, 0.25f))).boolean());
    while (other.get("IsRunning").boolean()) KVXPlatformDrainMainQueue(0.01);
    EXPECT_GE(other.get("OutputPosition").number(), 2000.0);

    EXPECT_TRUE(player.get("IsRunning").boolean());
    player.set("NoUnderflow", false);
    player.call("Stop");
    EXPECT_FALSE(player.get("IsRunning").boolean());
    runAllEvents(loaded.host);
    EXPECT_EQ(alive.count(), 1);
    EXPECT_EQ(devices.count(), 2);
    EXPECT_EQ(role.count(), 2);
}

TEST_F(DeviceEvents, OfAnUnknownObjectNeverArrive)
{
    const EventCount unknown(loaded.host, 0x7FFFFFFF, overall('livn'));
    EXPECT_EQ(statusText(unknown.listener.get("LastError").integer()), "!obj");
    EXPECT_EQ(unknown.listener.get("ObjectID").unsigned64(), 0x7FFFFFFFu);
    EXPECT_EQ(statusText(unknown.listener.get("PropertySelector").integer()), "livn");
    runAllEvents(loaded.host);
    EXPECT_EQ(unknown.count(), 0);
}

// ---- many changes ----

constexpr int listenerCount = 100, changeCount = 10000, changerCount = 3;
constexpr UInt32 busyChannels = 7, quietChannel = 8;

std::vector<std::unique_ptr<SteppedDevice>> makeDevices()
{
    std::vector<std::unique_ptr<SteppedDevice>> devices;
    for (int i = 0; i < changerCount; ++i) devices.push_back(std::make_unique<SteppedDevice>(44100, 8, 64));
    return devices;
}

/// The function of a thread that changes the volume of one channel after the other. After every 250 changes
/// the thread waits until the main thread has created and destroyed listeners again.
/// Returns  the number of changes of each channel.
std::vector<int> change(AudioDeviceID device, int count, const std::atomic<int>& rounds)
{
    std::vector<int> changes(quietChannel + 1);
    for (int i = 0; i < count; ++i) {
        if (i % 250 == 0)
            for (const int before = rounds; rounds == before;) std::this_thread::yield();
        const UInt32 channel = UInt32(i) % busyChannels + 1;
        const auto at = ofOutput('volm', channel);
        const Float32 level = ++changes[channel] % 2 ? 0.5f : 0.25f;
        EXPECT_EQ(AudioObjectSetPropertyData(device, &at, 0, nullptr, sizeof level, &level), noErr);
    }
    return changes;
}

TEST_F(DeviceEvents, ConcurrentChangesReachLiveListenersAndNoDestroyedOnes)
{
    const auto devices = makeDevices();
    struct LastingListener {
        std::size_t device;
        UInt32 channel;
        EventCount events;
    };
    std::vector<LastingListener> lasting;
    for (int i = 0; i < listenerCount; ++i) {
        const std::size_t device = std::size_t(i) % changerCount;
        const UInt32 channel = UInt32(i) % quietChannel + 1;
        lasting.push_back({device, channel, {loaded.host, devices[device]->id(), ofOutput('volm', channel)}});
    }
    std::atomic<int> changing{changerCount}, rounds{0};
    std::vector<std::vector<int>> changes(changerCount);
    std::vector<std::thread> threads;
    for (int i = 0; i < changerCount; ++i)
        threads.emplace_back([&, i] {
            const int share = changeCount / changerCount + (i < changeCount % changerCount);
            changes[std::size_t(i)] = change(devices[std::size_t(i)]->id(), share, rounds);
            --changing;
        });

    // While the threads change volumes, destroy listeners of a busy channel whose events are pending. New
    // listeners of the quiet channel may get the addresses of destroyed listeners, and must not receive those
    // events.
    int quietEvents = 0;
    while (changing) {
        std::vector<EventCount> busy, quiet;
        for (const auto& device : devices) busy.emplace_back(loaded.host, device->id(), ofOutput('volm', 1));
        KVXPlatformDrainMainQueue(0);
        busy.clear();
        for (const auto& device : devices)
            quiet.emplace_back(loaded.host, device->id(), ofOutput('volm', quietChannel));
        KVXPlatformDrainMainQueue(0);
        for (const EventCount& each : quiet) quietEvents += each.count();
        ++rounds;
    }
    for (std::thread& thread : threads) thread.join();
    runAllEvents(loaded.host);

    EXPECT_EQ(quietEvents, 0);
    for (const LastingListener& each : lasting)
        EXPECT_EQ(each.events.count(), changes[each.device][each.channel])
            << "device " << each.device << ", channel " << each.channel;
}

} // namespace
