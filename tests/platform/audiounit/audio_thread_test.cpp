// Tests that a unit's work in an I/O cycle does not allocate, free or lock.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <mutex>
#include <random>
#include <string>

namespace {

using namespace test;

// A device calls its I/O procedures in the order in which they were added, so `begin` runs before the unit's
// procedure and `end` runs after it.
OSStatus begin(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
               AudioBufferList*, const AudioTimeStamp*, void*)
{
    allocator_hook::watchThisThread(true);
    return noErr;
}
OSStatus end(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
             AudioBufferList*, const AudioTimeStamp*, void*)
{
    allocator_hook::watchThisThread(false);
    return noErr;
}

TEST(AudioThread, HookCountsHeapCallsAndLocks)
{
    const allocator_hook::Count count;
    allocator_hook::watchThisThread(true);
    void* volatile memory = std::malloc(10);
    std::free(memory);
    int* volatile number = new int(1);
    delete number;
    std::mutex mutex;
    mutex.lock();
    mutex.unlock();
    allocator_hook::watchThisThread(false);
    EXPECT_GE(count.heapCalls(), 4);
    if (allocator_hook::countsLocks) {
        EXPECT_GE(count.locks(), 1);
    }
    const allocator_hook::Count later;
    std::free(std::malloc(10));
    EXPECT_EQ(later.heapCalls(), 0) << "on a thread that is not watched";
    EXPECT_EQ(later.locks(), 0);
}

// clang-format off
const struct { Float64 client, device; UInt32 channels, slice, limit; UInt32 bits, flags; const char* why; } cases[] = {
    {44100, 44100, 2, 512,  1156, 32, isFloat | isPacked | isNonInterleaved, "canonical, at the device's rate"},
    {44100, 44100, 6, 4096, 300,  16, isSigned | isPacked | isBig,  "16 bits, several pulls per cycle"},
    {44100, 48000, 2, 512,  1156, 32, isFloat | isPacked,           "converted to a higher rate"},
    {96000, 44100, 1, 512,  1156, 24, isSigned | isPacked,          "converted to a lower rate"},
    {8000,  44100, 2, 8192, 64,   8,  isPacked,                     "converted to a much higher rate, small slices"},
};
// clang-format on

TEST(AudioThread, CycleAllocatesNothingAndTakesNoLock)
{
    for (const auto& fact : cases) {
        SCOPED_TRACE(fact.why);
        SteppedDevice device(fact.device, 2, fact.slice);
        ASSERT_EQ(AudioDeviceAddIOProc(device.id(), begin, nullptr), noErr);
        const auto format = pcm(fact.client, fact.channels, fact.bits, fact.flags);
        const Unit unit('ahal');
        Feeder feeder(format);
        feeder.mostRequests = 0;
        ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
        ASSERT_EQ(unit.setFormat(1, format), noErr);
        ASSERT_EQ(unit.setLimit(fact.limit), noErr);
        ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
        ASSERT_EQ(AudioDeviceAddIOProc(device.id(), end, nullptr), noErr);
        ASSERT_EQ(AudioDeviceStart(device.id(), begin), noErr);
        ASSERT_EQ(AudioDeviceStart(device.id(), end), noErr);

        const allocator_hook::Count count;
        for (int cycle = 0; cycle < 20; ++cycle) {
            device.step(fact.slice);
            // Change settings as other threads may do between cycles.
            AudioUnitSetParameter(unit, kHALOutputParam_Volume, 0, 0, cycle % 2 ? 1 : 0.5f, 0);
            AudioUnitReset(unit, 0, 0);
            const SInt32 map[] = {cycle % 2, 0};
            AudioUnitSetProperty(unit, 2002, 2, 0, map, sizeof map);
            unit.setCallback(cycle % 5 ? Feeder::callback : nullptr, &feeder);
        }
        EXPECT_EQ(count.heapCalls(), 0);
        EXPECT_EQ(count.locks(), 0);
        EXPECT_GT(feeder.calls, 10);
        AudioDeviceRemoveIOProc(device.id(), begin);
        AudioDeviceRemoveIOProc(device.id(), end);
    }
}

/// While an object exists, the device's I/O cycles are watched from before the first procedure until after
/// the procedures that were added before follow().
class WatchedCycles {
public:
    explicit WatchedCycles(AudioDeviceID watched) : device(watched)
    {
        EXPECT_EQ(AudioDeviceAddIOProc(device, begin, nullptr), noErr);
        EXPECT_EQ(AudioDeviceStart(device, begin), noErr);
    }
    ~WatchedCycles()
    {
        AudioDeviceRemoveIOProc(device, begin);
        AudioDeviceRemoveIOProc(device, end);
    }
    WatchedCycles(const WatchedCycles&) = delete;
    void follow() const
    {
        AudioDeviceRemoveIOProc(device, end);
        EXPECT_EQ(AudioDeviceAddIOProc(device, end, nullptr), noErr);
        EXPECT_EQ(AudioDeviceStart(device, end), noErr);
    }

private:
    const AudioDeviceID device;
};

// Slices of random sizes, among resets, restarts and changes of the device's rate.
TEST(AudioThread, ConversionAllocatesNothingAndTakesNoLockAmongChanges)
{
    SteppedDevice device(48000, 2, 512);
    const WatchedCycles watched(device.id());
    const Unit unit('ahal');
    Feeder feeder(canonical(44100, 2));
    feeder.mostRequests = 0;
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setFormat(1, canonical(44100, 2)), noErr);
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    const allocator_hook::Count count;
    std::mt19937 random(3);
    for (int slice = 0; slice < 2000; ++slice) {
        watched.follow();
        device.played.clear();
        device.step(1 + random() % 512);
        if (random() % 20 == 0) EXPECT_EQ(AudioUnitReset(unit, 0, 0), noErr);
        if (random() % 50 == 0) {
            EXPECT_EQ(AudioOutputUnitStop(unit), noErr);
            EXPECT_EQ(AudioOutputUnitStart(unit), noErr);
        }
        if (random() % 200 == 0) {
            const Float64 rates[] = {48000, 96000, 44100, 22050};
            const Float64 rate = rates[random() % 4];
            EXPECT_EQ(AudioDeviceSetProperty(device.id(), nullptr, 0, 0,
                                             kAudioDevicePropertyNominalSampleRate, sizeof rate, &rate),
                      noErr);
            const int calls = feeder.calls;
            EXPECT_TRUE(eventually([&] {
                device.step(512);
                return feeder.calls > calls;
            }));
        }
    }
    EXPECT_EQ(count.heapCalls(), 0);
    EXPECT_EQ(count.locks(), 0);
    EXPECT_GT(feeder.calls, 1500);
}

TEST(AudioThread, SliceThroughConnectedUnitsAllocatesNothingAndTakesNoLock)
{
    const Unit source('genr'), destination('genr');
    Feeder feeder(canonical(44100, 2));
    feeder.mostRequests = 0;
    ASSERT_EQ(source.setFormat(2, pcm(48000, 2, 16, isSigned | isPacked)), noErr);
    ASSERT_EQ(source.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(destination.set(kAudioUnitProperty_MakeConnection, 1, 0, AudioUnitConnection{source, 0, 0}),
              noErr);
    ASSERT_EQ(AudioUnitInitialize(source), noErr);
    ASSERT_EQ(AudioUnitInitialize(destination), noErr);
    List list(canonical(44100, 2), 512);
    const allocator_hook::Count count;
    for (int slice = 0; slice < 50; ++slice) {
        list.restore();
        if (slice % 2) list.clearPointers();
        const AudioTimeStamp time = sampleTime(slice * 512.0);
        allocator_hook::watchThisThread(true);
        const OSStatus status = AudioUnitRender(destination, nullptr, &time, 0, 512, list.get());
        Float32 volume = 0;
        AudioUnitGetParameter(destination, 14, 0, 0, &volume);
        allocator_hook::watchThisThread(false);
        ASSERT_EQ(status, noErr);
    }
    EXPECT_EQ(count.heapCalls(), 0);
    EXPECT_EQ(count.locks(), 0);
}

} // namespace
