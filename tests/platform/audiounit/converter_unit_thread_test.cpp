// Tests the converter unit on a render thread: it allocates nothing and takes no lock, while another thread
// changes settings.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <string>
#include <thread>

namespace {

using namespace test;

// clang-format off
const struct { Float64 from, to; UInt32 sources, channels, bits, flags; const char* why; } cases[] = {
    {44100,  44100, 2, 2, 32, isFloat | isPacked,          "pairs of float"},
    {44100,  44100, 1, 2, 32, isFloat | isPacked | isNonInterleaved, "one channel to two"},
    {44100,  44100, 6, 2, 16, isSigned | isPacked | isBig, "16 bits"},
    {44100,  48000, 2, 6, 24, isSigned | isPacked,         "another rate"},
    {192000, 8000,  6, 1, 32, isFloat | isPacked,          "a rate far apart"},
};
// clang-format on

TEST(ConverterUnitThread, SliceAllocatesNothingAndTakesNoLock)
{
    for (const auto& fact : cases) {
        SCOPED_TRACE(fact.why);
        const auto in = pcm(fact.from, fact.sources, fact.bits, fact.flags);
        const Unit unit('conv', 'aufc');
        Feeder feeder(in);
        feeder.mostRequests = 0;
        ASSERT_EQ(unit.setFormat(1, in), noErr);
        ASSERT_EQ(unit.setFormat(2, canonical(fact.to, fact.channels)), noErr);
        ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        List list(canonical(fact.to, fact.channels), 1156);
        const allocator_hook::Count count;
        for (int slice = 0; slice < 20; ++slice) {
            list.restore();
            if (slice % 2) list.clearPointers();
            if (slice == 7) AudioUnitReset(unit, 0, 0);
            if (slice == 9) unit.set(26, 0, 0, UInt32{0});
            if (slice == 11) feeder.status = 'fail';
            if (slice == 12) feeder.status = noErr;
            const AudioTimeStamp time = sampleTime(slice * 1156.0);
            allocator_hook::watchThisThread(true);
            const OSStatus status =
                AudioUnitRender(unit, nullptr, &time, 0, slice % 3 ? 1156 : 1, list.get());
            allocator_hook::watchThisThread(false);
            EXPECT_TRUE(status == noErr || slice == 11) << slice;
        }
        EXPECT_EQ(count.heapCalls(), 0);
        EXPECT_EQ(count.locks(), 0);
    }
}

// Slices of random sizes, among resets and changes of the quality.
TEST(ConverterUnitThread, ConversionAllocatesNothingAndTakesNoLockAmongChanges)
{
    const Unit unit('conv', 'aufc');
    Feeder feeder(canonical(44100, 2));
    feeder.mostRequests = 0;
    ASSERT_EQ(unit.setFormat(1, canonical(44100, 2)), noErr);
    ASSERT_EQ(unit.setFormat(2, canonical(48000, 2)), noErr);
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    List list(canonical(48000, 2), 1156);
    const allocator_hook::Count count;
    std::mt19937 random(5);
    Float64 at = 0;
    for (int slice = 0; slice < 3000; ++slice) {
        list.restore();
        const UInt32 frames = 1 + random() % 1156;
        const AudioTimeStamp time = sampleTime(at);
        at += frames;
        allocator_hook::watchThisThread(true);
        const OSStatus status = AudioUnitRender(unit, nullptr, &time, 0, frames, list.get());
        allocator_hook::watchThisThread(false);
        ASSERT_EQ(status, noErr);
        if (random() % 20 == 0) EXPECT_EQ(AudioUnitReset(unit, 0, 0), noErr);
        if (random() % 50 == 0) EXPECT_EQ(unit.set(26, 0, 0, UInt32{slice % 2 ? 96u : 127u}), noErr);
    }
    EXPECT_EQ(count.heapCalls(), 0);
    EXPECT_EQ(count.locks(), 0);
}

// A callback resets the unit that calls it, so the reset happens on the render thread.
TEST(ConverterUnitThread, ResetInsideItsSliceAllocatesNothingAndTakesNoLock)
{
    const Unit unit('conv', 'aufc');
    const auto resets = [](void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                           AudioBufferList*) -> OSStatus {
        return AudioUnitReset(*static_cast<const Unit*>(context), 0, 0);
    };
    ASSERT_EQ(unit.setFormat(2, canonical(48000, 2)), noErr);
    ASSERT_EQ(unit.setCallback(resets, const_cast<Unit*>(&unit)), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    List list(canonical(48000, 2), 512);
    const allocator_hook::Count count;
    for (int slice = 0; slice < 100; ++slice) {
        list.restore();
        const AudioTimeStamp time = sampleTime(slice * 512.0);
        allocator_hook::watchThisThread(true);
        const OSStatus status = AudioUnitRender(unit, nullptr, &time, 0, 512, list.get());
        allocator_hook::watchThisThread(false);
        ASSERT_EQ(status, noErr);
    }
    EXPECT_EQ(count.heapCalls(), 0);
    EXPECT_EQ(count.locks(), 0);
}

TEST(ConverterUnitThread, SettingsChangeWhileRendering)
{
    for (const Float64 to : {44100.0, 48000.0}) {
        const Unit unit('conv', 'aufc');
        Feeder feeder(canonical(44100, 2));
        feeder.mostRequests = 0;
        ASSERT_EQ(unit.setFormat(2, canonical(to, 2)), noErr);
        ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        std::atomic<bool> isOver{false};
        std::atomic<int> slices{0};
        std::thread audio([&] {
            List list(canonical(to, 2), 64);
            for (Float64 at = 0; !isOver; at += 64) {
                list.restore();
                const AudioTimeStamp time = sampleTime(at);
                EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 64, list.get()), noErr);
                ++slices;
            }
        });
        for (int slice = 0; slice < 200 || slices < 100; ++slice) {
            EXPECT_EQ(unit.set(26, 0, 0, slice % 2 ? UInt32{127} : UInt32{0}), noErr);
            const SInt32 map[] = {slice % 2, 0};
            EXPECT_EQ(AudioUnitSetProperty(unit, 2002, 2, 0, map, sizeof map), noErr);
            EXPECT_EQ(AudioUnitReset(unit, 0, 0), noErr);
            EXPECT_GE(unit.get<Float64>(20, 0, 0), 0);
        }
        isOver = true;
        audio.join();
    }
}

} // namespace
