// Buffered players on devices that are unknown, unplugged or dead, or that refuse to start.
#include "tests/endtoend/loaded_host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

using namespace endtoend;

using LostDevices = LoadedHostTest;
using host::MemoryBlock;
using host::Object;

MemoryBlock aSecond() { return MemoryBlock::copyOf(std::vector<float>(44100, 0.25f)); }

Object playingOn(host::Host& host, KVXDeviceID device)
{
    Object player = host.create(playerClass);
    player.set("OutputDeviceID", std::int64_t(device));
    player.set("NoUnderflow", true);
    EXPECT_TRUE(player.call("PlayFloatAudio", aSecond()).boolean());
    return player;
}

void waitUntilPlaying(const Object& player)
{
    while (!(player.get("OutputPosition").number() > 0))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void stop(const Object& player)
{
    player.set("NoUnderflow", false);
    player.call("Stop");
    EXPECT_FALSE(player.get("IsRunning").boolean());
}

TEST_F(LostDevices, UnknownDevicesDoNotStart)
{
    for (std::int64_t id : {std::int64_t(1), std::int64_t(999999), std::int64_t(-1)}) {
        Object player = loaded.host.create(playerClass);
        player.set("OutputDeviceID", id);
        EXPECT_FALSE(player.call("PlayFloatAudio", aSecond()).boolean()) << id;
        EXPECT_FALSE(player.get("IsRunning").boolean()) << id;
        EXPECT_EQ(player.call("FreeSpace").integer(), 199) << "the block stays queued";
        player.set("OutputDeviceID", std::int64_t(KVXPlatformBuiltInSimulatedDevice()));
        EXPECT_TRUE(player.call("Start").boolean());
        stop(player);
    }
}

TEST_F(LostDevices, UnpluggedDefaultIsReplacedByTheNextDevice)
{
    const KVXDeviceID device = addPacedDevice();
    ASSERT_NE(device, 0u);
    ASSERT_EQ(KVXPlatformChooseOutputDevice("Paced"), 0) << KVXPlatformErrorText();
    Object player = loaded.host.create(playerClass);
    ASSERT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
    EXPECT_TRUE(player.call("PlayFloatAudio", aSecond()).boolean())
        << "the built-in simulated device remains";
    EXPECT_GT(player.call("HardwareSampleRate").number(), 0);
    EXPECT_GT(player.call("HardwareNumberOfChannels").integer(), 0);
    stop(player);
}

TEST_F(LostDevices, PlayersOnUnpluggedDevicesStopWithoutHanging)
{
    const KVXDeviceID device = addPacedDevice();
    Object player = playingOn(loaded.host, device);
    waitUntilPlaying(player);
    ASSERT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
    EXPECT_TRUE(player.get("IsRunning").boolean());
    stop(player);
    EXPECT_FALSE(player.call("Start").boolean()) << "the device is removed";
    EXPECT_FALSE(player.get("IsRunning").boolean());
}

TEST_F(LostDevices, PlayersOnDeadDevicesStopWithoutHanging)
{
    const KVXDeviceID device = addPacedDevice();
    Object player = playingOn(loaded.host, device);
    waitUntilPlaying(player);
    ASSERT_EQ(KVXPlatformKillDevice(device), 0);
    stop(player);
    player = nullptr;
    KVXPlatformRemoveSimulatedDevice(device);
}

TEST_F(LostDevices, PlayersOnDeadDevicesAreDestroyedWithoutHanging)
{
    SteppedDevice device;
    Object player = loaded.host.create(playerClass);
    player.set("OutputDeviceID", std::int64_t(device.id()));
    ASSERT_TRUE(player.call("PlayFloatAudio", aSecond()).boolean());
    device.step(512);
    ASSERT_EQ(KVXPlatformKillDevice(device.id()), 0);
    player = nullptr; // the destructor of the player waits for the device
}

// The test runs in a child process, because a player whose device refused to start reports that it runs, and
// cannot be stopped.
TEST(LostDevicesDeathTest, PlayersOnDevicesThatRefuseToStartCountAsRunning)
{
    EXPECT_EXIT(
        {
            LoadedHost loaded;
            SteppedDevice device;
            KVXPlatformRefuseStart(device.id(), -50);
            Object player = loaded.host.create(playerClass);
            player.set("OutputDeviceID", std::int64_t(device.id()));
            const bool isAdded = player.call("AddFloatAudio", aSecond()).boolean();
            const bool isStarted = player.call("Start").boolean();
            const bool isRunning = player.get("IsRunning").boolean();
            const bool isStartedAgain = player.call("Start").boolean();
            std::fprintf(stderr, "added %d, started %d, running %d, again %d\n", isAdded, isStarted,
                         isRunning, isStartedAgain);
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "added 1, started 0, running 1, again 1");
}

} // namespace
