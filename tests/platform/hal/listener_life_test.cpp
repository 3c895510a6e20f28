// Listeners of things that end, and listeners that end one another.
#include "tests/platform/hal/watcher.h"

#include <memory>

namespace {

using namespace bench;

AudioObjectPropertyAddress volume(UInt32 channel)
{
    return address(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeOutput, channel);
}

TEST(ListenerLife, ADeviceDiesOnceHoweverItGoes)
{
    const auto alive = address(kAudioDevicePropertyDeviceIsAlive);
    const struct {
        bool isKilled, isUnplugged;
    } facts[] = {{true, false}, {false, true}, {true, true}};
    for (const auto& fact : facts) {
        Device device;
        Watcher exact(device, alive), anything(device);
        const auto kill = [&] { KVXPlatformKillDevice(static_cast<KVXDeviceID>(AudioDeviceID{device})); };
        if (fact.isKilled) kill(), kill();
        if (fact.isUnplugged) device.unplug(), device.unplug();
        waitUntilTold();
        EXPECT_EQ(exact.takeTold(), std::vector<std::string>{"livn glob 0"});
        EXPECT_EQ(anything.takeTold(), std::vector<std::string>{"livn glob 0"});
        EXPECT_EQ(exact.remove(), noErr) << "of a device that is gone, too";
        EXPECT_EQ(anything.remove(), noErr);
    }
    EXPECT_EQ(account("property listener"), 0u);
}

TEST(ListenerLife, OfADeviceThatIsGoneHearsNothingMoreAndCannotBeAdded)
{
    Device device;
    const AudioDeviceID id = device;
    Watcher watcher(id);
    device.unplug();
    waitUntilTold();
    EXPECT_EQ(watcher.count(), 1);
    Device next; // never of the same number
    set<Float32>(next, volume(1), 0.5f);
    waitUntilTold();
    EXPECT_EQ(watcher.count(), 1);
    const auto at = volume(1);
    const auto nobody = [](AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) -> OSStatus {
        return noErr;
    };
    EXPECT_EQ(AudioObjectAddPropertyListener(id, &at, nobody, nullptr), kAudioHardwareBadObjectError);
}

TEST(ListenerLife, HearsNothingOfWhatWasBefore)
{
    Device device;
    std::atomic<bool> mayGoOn{false}, isHeld{false};
    Watcher slow(device, volume(1), [&] {
        isHeld = true;
        waitFor([&] { return mayGoOn.load(); });
    });
    set<Float32>(device, volume(1), 0.5f);
    waitFor([&] { return isHeld.load(); });
    set<Float32>(device, volume(2), 0.5f); // waits behind the slow one
    Watcher late(device, volume(anyElement));
    set<Float32>(device, volume(1), 0.25f);
    mayGoOn = true;
    waitUntilTold();
    EXPECT_EQ(late.takeTold(), std::vector<std::string>{"volm outp 1"});
}

TEST(ListenerLife, MayEndAnotherThatHasNotBeenToldYet)
{
    Device device;
    std::unique_ptr<Watcher> second;
    Watcher first(device, volume(1), [&] { EXPECT_EQ(second->remove(), noErr); });
    second = std::make_unique<Watcher>(device, volume(1));
    set<Float32>(device, volume(1), 0.5f);
    waitUntilTold();
    EXPECT_EQ(first.count(), 1);
    EXPECT_EQ(second->count(), 0) << "they are told in the order in which they were added";
}

TEST(ListenerLife, MayBeAddedInACallAndHearsOfTheNextChange)
{
    Device device;
    std::unique_ptr<Watcher> added;
    Watcher first(device, volume(1), [&] {
        if (!added) added = std::make_unique<Watcher>(device, volume(1));
    });
    set<Float32>(device, volume(1), 0.5f);
    waitUntilTold();
    ASSERT_TRUE(added);
    EXPECT_EQ(added->count(), 0);
    set<Float32>(device, volume(1), 0.25f);
    waitUntilTold();
    EXPECT_EQ(added->count(), 1);
    EXPECT_EQ(first.count(), 2);
}

TEST(ListenerLife, IsToldAsOftenAsItWasAdded)
{
    Device device;
    static std::atomic<int> calls;
    calls = 0;
    const auto count = [](AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) -> OSStatus {
        ++calls;
        return 'what'; // nobody looks at it
    };
    const auto at = volume(1);
    for (int i = 0; i < 3; ++i) ASSERT_EQ(AudioObjectAddPropertyListener(device, &at, count, &calls), noErr);
    float level = 1;
    for (int expected : {3, 3 + 2, 3 + 2 + 1}) {
        set<Float32>(device, volume(1), level -= 0.125f);
        waitUntilTold();
        EXPECT_EQ(calls, expected);
        EXPECT_EQ(AudioObjectRemovePropertyListener(device, &at, count, &calls), noErr) << "one at a time";
    }
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &at, count, &calls), noErr) << "none is left";
}

// Changes from three threads, listeners that come and go on a fourth: those that stay hear of every one.
TEST(ListenerLife, AStormReachesThoseThatStay)
{
    constexpr int changers = 3, changes = 1000, stayers = 20;
    std::vector<std::unique_ptr<Device>> devices;
    std::vector<std::unique_ptr<Watcher>> watchers;
    for (int i = 0; i < changers; ++i) devices.push_back(std::make_unique<Device>());
    for (int i = 0; i < stayers; ++i)
        watchers.push_back(std::make_unique<Watcher>(*devices[std::size_t(i % changers)], volume(1)));
    std::atomic<int> changing{changers};
    std::vector<std::thread> threads;
    for (int i = 0; i < changers; ++i)
        threads.emplace_back([&, i] {
            for (int n = 0; n < changes; ++n)
                set<Float32>(*devices[std::size_t(i)], volume(1), n % 2 ? 0.5f : 0.25f);
            --changing;
        });
    while (changing) {
        std::atomic<bool> isGone{false}, hasErred{false};
        Watcher passing(*devices[0], volume(1), [&] {
            if (isGone) hasErred = true;
        });
        passing.remove();
        isGone = true;
        EXPECT_FALSE(hasErred);
    }
    for (std::thread& thread : threads) thread.join();
    waitUntilTold();
    for (const auto& watcher : watchers) EXPECT_EQ(watcher->count(), changes);
    watchers.clear();
    EXPECT_EQ(account("property listener"), 0u);
}

} // namespace
