// Tests every life-cycle call in every state of a unit.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace test;

enum State { opened, initialized, running };

TEST(LifeCycle, EveryCallInEveryState)
{
    constexpr OSStatus uninitialized = kAudioUnitErr_Uninitialized;
    // clang-format off
    const struct { State state; OSStatus initialize, uninitialize, reset, start, stop; const char* why; } facts[] = {
        {opened,      noErr, noErr, noErr, uninitialized, noErr, "open"},
        {initialized, noErr, noErr, noErr, noErr,         noErr, "initialised"},
        {running,     noErr, noErr, noErr, noErr,         noErr, "running"},
    };
    // clang-format on
    for (const OSType subType : {'ahal', 'def ', 'sys ', 'genr'})
        for (const auto& fact : facts) {
            SCOPED_TRACE(fact.why);
            SteppedDevice device(44100, 2, 512);
            device.makeDefault();
            device.makeDefault(kAudioHardwarePropertyDefaultSystemOutputDevice);
            const auto inState = [&](const Unit& unit) {
                if (fact.state >= initialized) {
                    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
                }
                if (fact.state >= running) {
                    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
                }
            };
            const struct {
                OSStatus (*function)(AudioUnit);
                OSStatus status;
            } calls[] = {{AudioUnitInitialize, fact.initialize},
                         {AudioUnitUninitialize, fact.uninitialize},
                         {AudioOutputUnitStart, fact.start},
                         {AudioOutputUnitStop, fact.stop}};
            for (const auto& call : calls) {
                const Unit unit(subType);
                inState(unit);
                EXPECT_EQ(call.function(unit), call.status);
                EXPECT_EQ(call.function(unit), call.status) << "a second call";
                EXPECT_EQ(AudioUnitReset(unit, 0, 0), fact.reset);
            }
        }
}

TEST(LifeCycle, ResetChecksScopeAndElement)
{
    // clang-format off
    const struct { AudioUnitScope scope; AudioUnitElement element; OSStatus status; } facts[] = {
        {0, 0, noErr}, {1, 0, noErr}, {2, 0, noErr}, {1, 1, noErr}, {2, 1, noErr},
        {0, 1, kAudioUnitErr_InvalidElement}, {1, 2, kAudioUnitErr_InvalidElement},
        {3, 0, kAudioUnitErr_InvalidScope},   {0xFFFFFFFF, 0, kAudioUnitErr_InvalidScope},
    };
    // clang-format on
    const Unit unit('ahal');
    for (const auto& fact : facts)
        EXPECT_EQ(AudioUnitReset(unit, fact.scope, fact.element), fact.status)
            << fact.scope << ", " << fact.element;
}

TEST(LifeCycle, UninitialiseStops)
{
    SteppedDevice device(44100, 2, 512);
    const Unit unit('ahal');
    Feeder feeder(canonical(44100, 2));
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    EXPECT_EQ(unit.get<UInt32>(2001, 0, 0), 1u);
    EXPECT_EQ(device.step(512), 512u);
    ASSERT_EQ(AudioUnitUninitialize(unit), noErr);
    EXPECT_EQ(unit.get<UInt32>(2001, 0, 0), 0u);
    EXPECT_EQ(device.step(512), 0u) << "no procedure is left";
    EXPECT_EQ(feeder.calls, 1);
}

TEST(LifeCycle, CloseStops)
{
    SteppedDevice device(44100, 2, 512);
    Unit unit('ahal');
    Feeder feeder(canonical(44100, 2));
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    EXPECT_EQ(device.step(512), 512u);
    EXPECT_EQ(unit.close(), noErr);
    EXPECT_EQ(device.step(512), 0u);
    EXPECT_EQ(feeder.calls, 1);
}

TEST(LifeCycle, StartReturnsTheDevicesStatus)
{
    SteppedDevice device(44100, 2, 512);
    const Unit unit('ahal');
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    KVXPlatformRefuseStart(device.id(), kAudioHardwareUnspecifiedError);
    EXPECT_EQ(AudioOutputUnitStart(unit), kAudioHardwareUnspecifiedError);
    EXPECT_EQ(unit.get<UInt32>(2001, 0, 0), 0u);
    EXPECT_EQ(AudioOutputUnitStop(unit), noErr);
    KVXPlatformRefuseStart(device.id(), 0);
    EXPECT_EQ(AudioOutputUnitStart(unit), noErr) << "a second attempt";
    EXPECT_EQ(unit.get<UInt32>(2001, 0, 0), 1u);
}

TEST(LifeCycle, StartRefusesRatesTooFarApart)
{
    SteppedDevice device(192000, 2, 512);
    const Unit unit('ahal');
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setFormat(1, canonical(700, 2)), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(AudioOutputUnitStart(unit), kAudioUnitErr_FormatNotSupported) << "more than 256 to 1";
    ASSERT_EQ(AudioUnitUninitialize(unit), noErr);
    ASSERT_EQ(unit.setFormat(1, canonical(800, 2)), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(AudioOutputUnitStart(unit), noErr);
}

TEST(LifeCycle, CallsFromManyThreads)
{
    SteppedDevice device(44100, 2, 64, false);
    const Unit unit('ahal');
    Feeder feeder(canonical(44100, 2));
    feeder.mostRequests = 0;
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        for (int i = 0; i < 100; ++i) AudioOutputUnitStart(unit);
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 100; ++i) AudioOutputUnitStop(unit);
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 100; ++i) AudioUnitUninitialize(unit), AudioUnitInitialize(unit);
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 300; ++i) unit.setCallback(i % 2 ? Feeder::callback : nullptr, &feeder);
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 300; ++i)
            AudioUnitSetParameter(unit, 14, 0, 0, 0.5f, 0), unit.get<UInt32>(2001, 0, 0);
    });
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(AudioUnitUninitialize(unit), noErr);
    const int calls = feeder.calls;
    ASSERT_EQ(KVXPlatformSetStepped(device.id(), 1), 0);
    device.step(1024);
    EXPECT_EQ(feeder.calls, calls) << "an I/O cycle no longer calls the unit";
}

TEST(LifeCycle, RendersOneSliceAtATime)
{
    const Unit unit('genr');
    Feeder feeder(canonical(44100, 2));
    feeder.mostRequests = 0;
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    std::atomic<int> rendered{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            List list(canonical(44100, 2), 512);
            const AudioTimeStamp time = sampleTime(0);
            for (int slice = 0; slice < 200; ++slice) {
                const OSStatus status = AudioUnitRender(unit, nullptr, &time, 0, 512, list.get());
                EXPECT_TRUE(status == noErr || status == kAudioUnitErr_CannotDoInCurrentContext ||
                            status == kAudioUnitErr_Uninitialized)
                    << status;
                rendered += status == noErr;
            }
        });
    threads.emplace_back([&] {
        for (int i = 0; i < 50; ++i) AudioUnitUninitialize(unit), AudioUnitInitialize(unit);
    });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(feeder.calls, rendered) << "one call per slice, none for a refused one";
    List list(canonical(44100, 2), 512);
    const AudioTimeStamp time = sampleTime(0);
    EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 512, list.get()), noErr) << "after the contention";
    EXPECT_EQ(feeder.calls, rendered + 1);
}

} // namespace
