// The audio thread allocates nothing in the buffered player, in any state of the player.
#include "tests/endtoend/loaded_host.h"
#include "tests/endtoend/player/watched_io_procs.h"
#include "tests/support/allocator_hook.h"

#include <CoreAudio/CoreAudio.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace {

using namespace endtoend;
using host::MemoryBlock;
using host::Object;

struct PlayerAllocation : testing::Test {
    ~PlayerAllocation() override { watchIoProcs(false); }
    const allocator_hook::Count count;
};

/// Render a player in all states: at the ends of blocks, resampling, in an underflow, and at the end of
/// playback.
void renderAllStates(LoadedHost& loaded, int channels, float rate, const allocator_hook::Count& count)
{
    SteppedDevice device(44100, 2, 64);
    Object player = loaded.host.create(playerClass);
    player.set("OutputDeviceID", std::int64_t(device.id()));
    player.set("NumberOfChannels", channels);
    player.set("SampleRate", rate);
    player.set("NoUnderflow", true);
    const auto block = MemoryBlock::copyOf(std::vector<float>(250, 0.25f));
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(player.call("AddFloatAudio", block).boolean());
    ASSERT_TRUE(player.call("Start").boolean());
    KVXPlatformSetOutputTap(device.id(), nullptr, nullptr); // the tap keeps the output, so it allocates

    watchIoProcs(true);
    KVXPlatformStep(device.id(), 64 * 300); // render past the end of the queue
    EXPECT_TRUE(player.get("HadUnderflow").boolean());
    player.set("NoUnderflow", false);
    KVXPlatformStep(device.id(), 64); // the player stops by itself in this slice
    watchIoProcs(false);
    EXPECT_FALSE(player.get("IsRunning").boolean());
    EXPECT_GT(watchedIoProcCalls(), 100);
    EXPECT_EQ(count.allocations(), 0);
}

TEST_F(PlayerAllocation, IsAbsentInAllStates)
{
    LoadedHost loaded;
    for (int channels : {1, 2})
        for (float rate : {44100.0f, 22050.0f, 48000.0f}) renderAllStates(loaded, channels, rate, count);
}

TEST_F(PlayerAllocation, IsAbsentOnTheRenderThreadOfAPacedDevice)
{
    LoadedHost loaded;
    const PacedDevice device;
    Object player = loaded.host.create(playerClass);
    player.set("OutputDeviceID", std::int64_t(device.id));
    const auto block = MemoryBlock::copyOf(std::vector<float>(1000, 0.25f));
    for (int i = 0; i < 10; ++i) ASSERT_TRUE(player.call("AddFloatAudio", block).boolean());
    watchIoProcs(true);
    ASSERT_TRUE(player.call("Start").boolean());
    while (player.get("IsRunning").boolean()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    watchIoProcs(false);
    EXPECT_GT(watchedIoProcCalls(), 100);
    EXPECT_EQ(count.allocations(), 0);
}

void* volatile kept = nullptr;

OSStatus allocatingProcedure(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*,
                             const AudioTimeStamp*, AudioBufferList*, const AudioTimeStamp*, void*)
{
    kept = std::malloc(16);
    std::free(kept);
    kept = std::calloc(4, 4);
    std::free(kept);
    return 0;
}

TEST_F(PlayerAllocation, IsCountedInAnIoProcedure)
{
    SteppedDevice device(44100, 2, 64);
    KVXPlatformSetOutputTap(device.id(), nullptr, nullptr);
    ASSERT_EQ(AudioDeviceAddIOProc(device.id(), allocatingProcedure, nullptr), 0);
    ASSERT_EQ(AudioDeviceStart(device.id(), allocatingProcedure), 0);
    KVXPlatformStep(device.id(), 64);
    watchIoProcs(true);
    kept = std::malloc(16);
    std::free(kept);
    EXPECT_EQ(count.allocations(), 0) << "allocation is allowed on other threads";
    KVXPlatformStep(device.id(), 128);
    watchIoProcs(false);
    EXPECT_EQ(watchedIoProcCalls(), 2);
    EXPECT_EQ(count.allocations(), 4);
    KVXPlatformStep(device.id(), 64);
    EXPECT_EQ(count.allocations(), 4) << "no longer watched";
    EXPECT_EQ(AudioDeviceStop(device.id(), allocatingProcedure), 0);
    EXPECT_EQ(AudioDeviceRemoveIOProc(device.id(), allocatingProcedure), 0);
}

} // namespace
