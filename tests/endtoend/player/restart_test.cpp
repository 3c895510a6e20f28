// A player is started, fed, stopped and destroyed over and over beside a device that runs by its own clock.
// Under the thread sanitizer this is the proof of the hand-over between the two threads.
#include "tests/endtoend/loaded_host.h"
#include "tests/support/sanitizers.h"

#include <gtest/gtest.h>

namespace {

using namespace endtoend;
using host::MemoryBlock;
using host::Object;

// Each stop waits a sixtieth of a second, so the whole thousand is kept for the build that is made for it.
constexpr int rounds = support::hasThreadSanitizer ? 1000 : 100;

struct PacedDevice {
    KVXDeviceID id;

    PacedDevice()
    {
        KVXSimulatedDevice description = {};
        description.name = "Paced";
        description.sliceFrames = 64;
        id = KVXPlatformAddSimulatedDevice(&description);
    }
    ~PacedDevice() { KVXPlatformRemoveSimulatedDevice(id); }
};

// Another player on another device: all players share one lock, which this one keeps busy.
struct OtherPlayer {
    PacedDevice device;
    Object player;

    explicit OtherPlayer(host::Host& host) : player(host.create(playerClass))
    {
        player.set("OutputDeviceID", std::int64_t(device.id));
        player.set("NoUnderflow", true);
        EXPECT_TRUE(player.call("Start").boolean());
    }
    ~OtherPlayer() { player.set("NoUnderflow", false); }
};

TEST(Restart, OverAndOverBesideARunningDevice)
{
    LoadedHost loaded;
    {
        const PacedDevice device;
        const auto samples = MemoryBlock::copyOf(std::vector<float>(300, 0.25f));
        OtherPlayer other(loaded.host);

        for (int round = 0; round < rounds; ++round) {
            Object player = loaded.host.create(playerClass);
            player.set("OutputDeviceID", std::int64_t(device.id));
            player.set("SampleRate", round % 2 ? 44100.0 : 30000.0);
            player.set("NumberOfChannels", 1 + round % 3 / 2);
            ASSERT_TRUE(player.call("AddFloatAudio", samples).boolean());
            ASSERT_TRUE(player.call("Start").boolean()) << round;
            // Feed and look while the device may run dry, and the player stop by itself, at any moment.
            for (int i = 0; i < 3; ++i) {
                EXPECT_TRUE(player.call("AddFloatAudio", samples, 0, 0, i == 2).boolean());
                EXPECT_GE(player.get("OutputPosition").number(), 0);
                EXPECT_GE(player.get("OutputPositionRelative").number(), 0);
                (void)player.get("HadUnderflow");
                (void)other.player.call("AddFloatAudio", samples);
            }
            if (round % 2)
                player.call("Stop");
            else
                player.call("Close");
            EXPECT_FALSE(player.get("IsRunning").boolean());
            EXPECT_EQ(player.call("FreeSpace").integer(), 200);
        }
    }
    EXPECT_EQ(leftOver(loaded.host), "");
}

// Started again and again on its own: each start begins at position 0, each stop keeps where it was.
TEST(Restart, OfOnePlayerBeginsAnew)
{
    LoadedHost loaded;
    SteppedDevice device(44100, 2, 64);
    const auto samples = MemoryBlock::copyOf(std::vector<float>(10000, 0.25f));
    Object player = loaded.host.create(playerClass);
    player.set("OutputDeviceID", std::int64_t(device.id()));
    for (int round = 0; round < 10; ++round) {
        ASSERT_TRUE(player.call("PlayFloatAudio", samples).boolean());
        EXPECT_EQ(player.get("OutputPosition").number(), 0.0);
        device.step(640);
        EXPECT_EQ(player.get("OutputPosition").number(), 640.0);
        player.call("Stop");
        EXPECT_EQ(player.get("OutputPosition").number(), 640.0) << "positions stand until the next start";
    }
}

} // namespace
