// Listeners of a host program while devices go away, and while everything changes at once.
#include "tests/endtoend/audio_objects.h"
#include "tests/endtoend/loaded_host.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

using namespace endtoend;
using host::MemoryBlock;
using host::Object;

KVXDeviceID addPacedDevice()
{
    KVXSimulatedDevice description = {};
    description.name = "Paced";
    description.sliceFrames = 64;
    return KVXPlatformAddSimulatedDevice(&description);
}

TEST(HalEvents, ADeviceUnpluggedUnderAPlayerDiesOnceAndCanBeStopped)
{
    LoadedHost loaded;
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
        ASSERT_TRUE(
            player.call("PlayFloatAudio", MemoryBlock::copyOf(std::vector<float>(100, 0.25f))).boolean());
        running.waitForEvents(1);
        ASSERT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
        alive.waitForEvents(1);
        role.waitForEvents(2);

        // All else goes on: properties, other devices, other players.
        (void)audio.object.call("AudioDeviceGetPropertyMemory", std::int64_t(device), 0, false, "nsrt");
        EXPECT_EQ(audio.status(), "!dev");
        EXPECT_EQ(audio.get<AudioDeviceID>(kAudioObjectSystemObject, overall('dOut')),
                  AudioDeviceID(builtIn));
        Object other = loaded.host.create(playerClass);
        EXPECT_TRUE(
            other.call("PlayFloatAudio", MemoryBlock::copyOf(std::vector<float>(2000, 0.25f))).boolean());
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
    EXPECT_EQ(leftOver(loaded.host), "");
    EXPECT_TRUE(loaded.host.misuses().empty());
}

TEST(HalEvents, OfAnObjectThatIsNotThereNeverCome)
{
    LoadedHost loaded;
    {
        const EventCount nobody(loaded.host, 0x7FFFFFFF, overall('livn'));
        EXPECT_EQ(statusText(nobody.listener.get("LastError").integer()), "!obj");
        EXPECT_EQ(nobody.listener.get("ObjectID").unsigned64(), 0x7FFFFFFFu);
        EXPECT_EQ(statusText(nobody.listener.get("PropertySelector").integer()), "livn");
        runAllEvents(loaded.host);
        EXPECT_EQ(nobody.count(), 0);
    }
    EXPECT_EQ(leftOver(loaded.host), "");
}

// ---- the storm ----

constexpr int listenerCount = 100, changeCount = 10000, changerCount = 3;
constexpr UInt32 busyChannels = 7, quietChannel = 8;

std::vector<std::unique_ptr<SteppedDevice>> makeDevices()
{
    std::vector<std::unique_ptr<SteppedDevice>> devices;
    for (int i = 0; i < changerCount; ++i) devices.push_back(std::make_unique<SteppedDevice>(44100, 8, 64));
    return devices;
}

/// The changes of one thread: channel after channel, each to a value that it has not; now and then it lets
/// the main thread have another of its rounds. Returns how many each channel has seen.
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

TEST(HalEvents, AStormReachesThoseThatStayAndNoneThatHaveGone)
{
    LoadedHost loaded;
    {
        const auto devices = makeDevices();
        struct Stayer {
            std::size_t device;
            UInt32 channel;
            EventCount events;
        };
        std::vector<Stayer> stayers;
        for (int i = 0; i < listenerCount; ++i) {
            const std::size_t device = std::size_t(i) % changerCount;
            const UInt32 channel = UInt32(i) % quietChannel + 1;
            stayers.push_back(
                {device, channel, {loaded.host, devices[device]->id(), ofOutput('volm', channel)}});
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

        // Meanwhile listeners come and go: busy ones die with events under way; quiet ones, which may stand
        // where a busy one stood, must get none of them.
        int eventsOfTheQuiet = 0;
        while (changing) {
            std::vector<EventCount> busy, quiet;
            for (const auto& device : devices)
                busy.emplace_back(loaded.host, device->id(), ofOutput('volm', 1));
            KVXPlatformDrainMainQueue(0);
            busy.clear();
            for (const auto& device : devices)
                quiet.emplace_back(loaded.host, device->id(), ofOutput('volm', quietChannel));
            KVXPlatformDrainMainQueue(0);
            for (const EventCount& each : quiet) eventsOfTheQuiet += each.count();
            ++rounds;
        }
        for (std::thread& thread : threads) thread.join();
        runAllEvents(loaded.host);

        EXPECT_EQ(eventsOfTheQuiet, 0);
        for (const Stayer& stayer : stayers)
            EXPECT_EQ(stayer.events.count(), changes[stayer.device][stayer.channel])
                << "device " << stayer.device << ", channel " << stayer.channel;
    }
    EXPECT_EQ(leftOver(loaded.host), "");
    EXPECT_TRUE(loaded.host.misuses().empty());
}

} // namespace
