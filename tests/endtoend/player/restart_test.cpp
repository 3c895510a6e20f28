// Repeated starts and stops of a player on a running paced device, so that the thread sanitizer can find
// races between the main thread and the render thread.
#include "tests/endtoend/loaded_host.h"
#include "tests/support/sanitizers.h"

#include <gtest/gtest.h>

namespace {

using namespace endtoend;

using Restart = LoadedHostTest;
using host::MemoryBlock;
using host::Object;

// Each stop waits 1/60 s, so only the build with the thread sanitizer runs many rounds.
constexpr int rounds = support::hasThreadSanitizer ? 1000 : 100;

/// A second player, on another device, whose calls take the lock that all players share.
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

TEST_F(Restart, OnAPacedDeviceIsFreeOfRaces)
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
        // During these calls the queue may become empty at any moment, and the player may stop by itself.
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

TEST_F(Restart, BeginsAtPosition0AndStopKeepsThePosition)
{
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
        EXPECT_EQ(player.get("OutputPosition").number(), 640.0) << "the position stays until the next start";
    }
}

} // namespace
