// The I/O procedure allocates nothing and does not access the player after the player has stopped.
#include "player/ingestion.h"

#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/record_watch.h"
#include "tests/player/slice.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/device_spy.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <thread>

namespace {

using test::PlayerObject;
using Floats = std::vector<float>;

class PlayerRenderThread : public test::FreshPlatform {};

// ---- allocation ----

/// Run one I/O cycle during which every allocation is refused and counted.
void guardedCycle(const PlayerObject& object, test::Slice& slice)
{
    const c_library_spy::NoAllocation renderThread;
    test::runCycle(object, slice);
}

TEST_F(PlayerRenderThread, AllocatesNothing)
{
    const int before = c_library_spy::alarms();
    for (const std::int32_t channels : {1, 2})
        for (const float rate : {44100.0f, 22050.0f, 48000.0f, 192000.0f, 1.0f})
            for (const HostBoolean noUnderflow : {0, 1})
                for (const bool endsByRequest : {false, true}) {
                    device_spy::reset();
                    const PlayerObject object;
                    object->sampleRate = rate;
                    object->numberOfChannels = channels;
                    object->noUnderflow = noUnderflow;
                    for (int i = 0; i < 20; ++i) ASSERT_TRUE(object.add(Floats(100, 0.5f)));
                    ASSERT_TRUE(object.start());
                    test::Slice slice({test::layout(2, 256), test::layout(1, 256)});
                    for (int i = 0; i < 20 && object->isRunning; ++i) guardedCycle(object, slice);
                    object->stopRequested = endsByRequest;
                    object->noUnderflow = 0;
                    for (int i = 0; i < 200 && object->isRunning; ++i) guardedCycle(object, slice);
                    EXPECT_TRUE(rate == 1.0f || !object->isRunning)
                        << "the player has stopped: every branch ran";
                }
    EXPECT_EQ(c_library_spy::alarms(), before);
}

/// An I/O procedure that allocates memory, because it calls a player function that belongs on the main
/// thread.
OSStatus allocatingProcedure(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*,
                             const AudioTimeStamp*, AudioBufferList*, const AudioTimeStamp*, void* client)
{
    // Allocations with operator new are detected, too.
    const test::Block block(std::vector<unsigned char>(8, 0));
    player::AddSomeFloatAudio(*static_cast<player::AudioPlayerData*>(client), block, 0, 8, false);
    return 0;
}

TEST_F(PlayerRenderThread, EveryKindOfAllocationIsDetected)
{
    const auto isDetected = [](auto&& allocate) {
        const int before = c_library_spy::alarms();
        bool wasRefused;
        {
            const c_library_spy::NoAllocation renderThread;
            wasRefused = allocate();
        }
        return c_library_spy::alarms() == before + 1 && wasRefused;
    };
    void* volatile memory = nullptr; // volatile, because the compiler could remove an unused allocation
    const auto refused = [&] {
        const bool isNull = !memory;
        std::free(memory);
        return isNull;
    };
    EXPECT_TRUE(isDetected([&] { return memory = std::malloc(8), refused(); }));
    EXPECT_TRUE(isDetected([&] { return memory = std::calloc(2, 4), refused(); }));
    EXPECT_TRUE(isDetected([&] { return memory = std::realloc(nullptr, 8), refused(); }));
    EXPECT_TRUE(isDetected([&] {
        try {
            memory = ::operator new(8);
            ::operator delete(memory);
            return false;
        } catch (const std::bad_alloc&) {
            return true;
        }
    }));
    EXPECT_TRUE(isDetected([&] {
        try {
            memory = ::operator new[](8);
            ::operator delete[](memory);
            return false;
        } catch (const std::bad_alloc&) {
            return true;
        }
    }));
}

TEST_F(PlayerRenderThread, AllocationsInThePlayersCodeAreDetected)
{
    const PlayerObject object;
    const test::Block block(std::vector<unsigned char>(8, 0));
    ASSERT_TRUE(object.add({1})); // the first call looks up the host's functions, which may allocate
    host().recordsCalls = false;
    const int before = c_library_spy::alarms();
    {
        const c_library_spy::NoAllocation renderThread;
        EXPECT_FALSE(player::AddSomeFloatAudio(object.data(), block, 0, 8, false)) << "memory was refused";
    }
    EXPECT_EQ(c_library_spy::alarms(), before + 1);
    EXPECT_TRUE(player::AddSomeFloatAudio(object.data(), block, 0, 8, false));
    EXPECT_EQ(c_library_spy::alarms(), before + 1) << "allocation on the main thread is allowed";
}

TEST_F(PlayerRenderThread, AllocationsInAnIOProcedureAreDetected)
{
    const PlayerObject object;
    object->ioProc = allocatingProcedure;
    test::Slice slice({test::layout(1, 4)});
    const int before = c_library_spy::alarms();
    EXPECT_THROW(guardedCycle(object, slice), std::bad_alloc);
    EXPECT_GT(c_library_spy::alarms(), before);
}

TEST_F(PlayerRenderThread, FreesAndLocksOnceForEachBuffer)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1}));
    ASSERT_TRUE(object.add({2}));
    ASSERT_TRUE(object.start());
    test::Slice slice({test::layout(1, 2)});
    c_library_spy::begin();
    test::runCycle(object, slice);
    EXPECT_EQ(c_library_spy::end(), (std::vector<std::string>{"lock", "unlock", "free", "lock", "unlock",
                                                              "free", "lock", "unlock"}))
        << "once for each buffer, and once for the empty queue";
}

// ---- the last access to the player ----

#if !defined(__has_feature)
#define __has_feature(feature) 0
#endif

// The host may free the record once isRunning is false. The test records every access to the record after the
// removal of the I/O procedure.
TEST_F(PlayerRenderThread, ClearsIsRunningAsItsLastAccess)
{
#if __has_feature(thread_sanitizer)
    GTEST_SKIP() << "this sanitizer handles the signals itself";
#endif
    for (const bool isStopRequested : {false, true}) {
        SCOPED_TRACE(isStopRequested);
        device_spy::reset();
        test::WatchedRecord<player::AudioPlayerData> record;
        player::AudioPlayerData& player = *record;
        {
            const PlayerObject object;
            std::memcpy(&player, &object.data(), sizeof player);
        }
        player.isRunning = 1;
        player.stopRequested = isStopRequested;
        test::Slice slice({test::layout(1, 4)});
        const AudioTimeStamp time = {};
        AudioBufferList noInput = {};
        const AudioDeviceIOProc procedure = player.ioProc;

        spy::answer("AudioDeviceRemoveIOProc").during = [&] { record.watch(); };
        procedure(2, &time, &noInput, &time, &slice.list(), &time, &player);
        const std::vector<test::Access> accesses = record.accesses();

        ASSERT_EQ(accesses.size(), 1u);
        EXPECT_EQ(accesses[0].offset, offsetof(player::AudioPlayerData, isRunning));
        EXPECT_TRUE(accesses[0].isWrite);
        EXPECT_EQ(player.isRunning, 0);
    }
}

TEST_F(PlayerRenderThread, RecordedAccessesAreReadsAndWritesInOrder)
{
#if __has_feature(thread_sanitizer)
    GTEST_SKIP();
#endif
    test::WatchedRecord<player::AudioPlayerData> record;
    volatile player::AudioPlayerData& player = *record;
    record.watch();
    player.numberOfChannels = 2;
    const std::int32_t count = player.queueCount;
    player.hadUnderflow = 1;
    const std::vector<test::Access> accesses = record.accesses();
    EXPECT_EQ(count, 0);
    ASSERT_EQ(accesses.size(), 3u);
    EXPECT_EQ(accesses[0].offset, offsetof(player::AudioPlayerData, numberOfChannels));
    EXPECT_TRUE(accesses[0].isWrite);
    EXPECT_EQ(accesses[1].offset, offsetof(player::AudioPlayerData, queueCount));
    EXPECT_FALSE(accesses[1].isWrite);
    EXPECT_EQ(accesses[2].offset, offsetof(player::AudioPlayerData, hadUnderflow));
    EXPECT_TRUE(accesses[2].isWrite);
}

/// A device with a thread that runs I/O cycles until the I/O procedure has removed itself.
class RunningDevice {
public:
    explicit RunningDevice(AudioDeviceIOProc procedure, void* client)
        : thread_([=] {
              const AudioTimeStamp time = {};
              AudioBufferList noInput = {};
              float samples[64];
              while (!isRemoved_.load(std::memory_order_relaxed)) {
                  AudioBufferList list = {1, {{2, sizeof samples, samples}}};
                  procedure(2, &time, &noInput, &time, &list, &time, client);
              }
          })
    {
    }
    ~RunningDevice() { thread_.join(); }

    /// The spy calls this function when the I/O procedure removes itself.
    static void remove() { isRemoved_.store(true, std::memory_order_relaxed); }
    static void prepare() { isRemoved_.store(false, std::memory_order_relaxed); }

private:
    static std::atomic<bool> isRemoved_;
    std::thread thread_;
};
std::atomic<bool> RunningDevice::isRemoved_{false};

// The test starts a player, adds data, stops and frees the player while the device runs. The sanitizers
// report an access of the device's thread after the free, or an access that is not ordered before the free.
TEST_F(PlayerRenderThread, TheHostMayFreeThePlayerAsSoonAsItHasStopped)
{
    const long before = c_library_spy::liveBlocks();
    spy::answer("AudioDeviceRemoveIOProc").during = RunningDevice::remove;
    spy::answer("Delay").during = [] { std::this_thread::yield(); };
    for (int i = 0; i < 300; ++i) {
        RunningDevice::prepare();
        spy::forgetCalls();
        std::unique_ptr<RunningDevice> device;
        {
            const PlayerObject object;
            spy::answer("AudioDeviceStart").during = [&] {
                device = std::make_unique<RunningDevice>(object->ioProc, &object.data());
            };
            test::members.set<HostBoolean>(object, "NoUnderflow", 1);
            ASSERT_TRUE(object.start());
            for (int buffer = 0; buffer < 5; ++buffer) object.add(Floats(37, 0.25f), buffer == 3);
            test::members.get<double>(object, "OutputPosition");
            test::members.get<double>(object, "OutputPositionRelative");
            test::members.set<float>(object, "SampleRate", 48000);
            test::members.set<HostBoolean>(object, "NoUnderflow", 0);
            while (test::members.get<HostBoolean>(object, "IsRunning") && i % 2) std::this_thread::yield();
            test::members.call<void>("Stop", object);
            EXPECT_EQ(test::members.get<HostBoolean>(object, "IsRunning"), 0);
        } // the object is freed here, while the device's thread may still run its last cycle
        device.reset();
    }
    EXPECT_EQ(c_library_spy::liveBlocks(), before);
}

} // namespace
