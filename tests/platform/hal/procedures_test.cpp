// Adding, starting, stopping and removing procedures outside a cycle.
#include "tests/platform/hal/test_device.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace {

using namespace haltest;

constexpr OSStatus good = noErr, refused = kAudioHardwareIllegalOperationError,
                   noDevice = kAudioHardwareBadDeviceError;

OSStatus quiet(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
               AudioBufferList*, const AudioTimeStamp*, void*)
{
    return noErr;
}
OSStatus other(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
               AudioBufferList*, const AudioTimeStamp*, void*)
{
    return 'none';
}

TEST(Procedures, ReturnTheStatedStatusInAnyOrder)
{
    Device device;
    const AudioDeviceID id = device, missing = 0x7FFFFFFF;
    const struct {
        std::function<OSStatus()> call;
        OSStatus expected;
        const char* why;
    } facts[] = {
        {[=] { return AudioDeviceStart(id, quiet); }, refused, "never added"},
        {[=] { return AudioDeviceStop(id, quiet); }, refused, "never added"},
        {[=] { return AudioDeviceRemoveIOProc(id, quiet); }, refused, "never added"},
        {[=] { return AudioDeviceAddIOProc(id, nullptr, nullptr); }, refused, "no procedure"},
        {[=] { return AudioDeviceAddIOProc(id, quiet, nullptr); }, good, "the first time"},
        {[=] { return AudioDeviceAddIOProc(id, quiet, nullptr); }, refused, "already registered"},
        {[=] { return AudioDeviceAddIOProc(id, other, nullptr); }, good, "another procedure"},
        {[=] { return AudioDeviceStop(id, quiet); }, good, "registered, though not started"},
        {[=] { return AudioDeviceStart(id, quiet); }, good, "registered"},
        {[=] { return AudioDeviceStart(id, quiet); }, good, "a second start does nothing"},
        {[=] { return AudioDeviceStop(id, quiet); }, good, "one stop suffices"},
        {[=] { return AudioDeviceStart(id, quiet); }, good, "again"},
        {[=] { return AudioDeviceRemoveIOProc(id, quiet); }, good, "stops it as well"},
        {[=] { return AudioDeviceRemoveIOProc(id, quiet); }, refused, "removed"},
        {[=] { return AudioDeviceStop(id, quiet); }, refused, "removed"},
        {[=] { return AudioDeviceDestroyIOProcID(id, other); }, refused, "a function is not a unique ID"},
        {[=] { return AudioDeviceRemoveIOProc(id, other); }, good, "the other is still registered"},
        {[=] { return AudioDeviceStop(id, nullptr); }, refused, "the device itself was not started"},
        {[=] { return AudioDeviceCreateIOProcID(id, quiet, nullptr, nullptr); }, refused,
         "no result for the ID"},
        {[=] { return AudioDeviceAddIOProc(missing, quiet, nullptr); }, noDevice, "no such device"},
        {[=] { return AudioDeviceRemoveIOProc(missing, quiet); }, noDevice, "no such device"},
        {[=] { return AudioDeviceStart(missing, quiet); }, noDevice, "no such device"},
        {[=] { return AudioDeviceStop(missing, quiet); }, noDevice, "no such device"},
        {[=] { return AudioDeviceStart(kAudioObjectSystemObject, quiet); }, noDevice,
         "an object, but no device"},
        {[=] { return AudioDeviceAddIOProc(0, quiet, nullptr); }, noDevice, "0 is not a device"},
    };
    for (const auto& fact : facts) EXPECT_EQ(text(fact.call()), text(fact.expected)) << fact.why;
    EXPECT_EQ(KVXPlatformStep(device, 64), 0u);
    EXPECT_EQ(liveCount("IOProc"), 0u);
}

TEST(Procedures, OneFunctionHasSeveralIDs)
{
    Device device;
    std::vector<AudioDeviceIOProcID> ids(3);
    for (auto& id : ids) ASSERT_EQ(AudioDeviceCreateIOProcID(device, quiet, nullptr, &id), noErr);
    ASSERT_EQ(AudioDeviceAddIOProc(device, quiet, nullptr), noErr) << "and may be registered without an ID";
    EXPECT_EQ(liveCount("IOProc"), 4u);
    for (auto id : ids) EXPECT_EQ(AudioDeviceStart(device, id), noErr);
    EXPECT_EQ(AudioDeviceDestroyIOProcID(device, ids[1]), noErr);
    EXPECT_EQ(AudioDeviceStop(device, ids[1]), refused);
    EXPECT_EQ(AudioDeviceStop(device, ids[0]), noErr);
    EXPECT_EQ(AudioDeviceDestroyIOProcID(device, ids[0]), noErr);
    EXPECT_EQ(AudioDeviceDestroyIOProcID(device, ids[2]), noErr);
    EXPECT_EQ(AudioDeviceRemoveIOProc(device, quiet), noErr);
    EXPECT_EQ(liveCount("IOProc"), 0u);
}

TEST(Procedures, AreNotCalledAfterAStopFromAnotherThread)
{
    Device device(Device::paced());
    for (bool isRemoved : {false, true})
        for (int i = 0; i < 20; ++i) {
            std::atomic<bool> mayBeCalled{true}, isInside{false}, hasErred{false};
            Procedure procedure(device, [&](const Call&) {
                isInside = true;
                if (!mayBeCalled) hasErred = true;
                // The call lasts long enough for a stop request during the call.
                std::this_thread::sleep_for(std::chrono::microseconds(200));
                isInside = false;
            });
            ASSERT_EQ(procedure.start(), noErr);
            waitFor([&] { return procedure.calls() > 0; });
            ASSERT_EQ(isRemoved ? procedure.remove() : procedure.stop(), noErr);
            EXPECT_FALSE(isInside) << "the call in progress has returned";
            mayBeCalled = false;
            procedure.remove();
            EXPECT_FALSE(hasErred);
        }
}

TEST(Procedures, OthersContinueWhileOneStartsAndStops)
{
    Device device(Device::paced());
    Procedure steady(device, [](const Call&) {});
    steady.start();
    for (int i = 0; i < 200; ++i) {
        Procedure passing(device, [](const Call&) {});
        passing.start();
    }
    const int before = steady.calls();
    waitFor([&] { return steady.calls() > before + 3; });
    EXPECT_EQ(steady.stop(), noErr);
}

TEST(Procedures, StartAndStopFromManyThreads)
{
    Device device(Device::paced());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                Procedure procedure(device, [](const Call& call) { call.fill(0.1f); });
                EXPECT_EQ(procedure.start(), noErr);
                if (i % 10 == 0) waitFor([&] { return procedure.calls() > 0; });
                EXPECT_EQ(procedure.stop(), noErr);
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(liveCount("IOProc"), 0u);
}

TEST(Procedures, AddingDoesNotWaitForACallInProgress)
{
    // While a program adds or starts a procedure, the program may hold a lock for which another of its
    // procedures waits.
    Device device(Device::paced());
    std::mutex programLock;
    std::atomic<bool> isWaiting{false};
    std::unique_lock<std::mutex> lock(programLock);
    Procedure blocked(device, [&](const Call&) {
        isWaiting = true;
        const std::lock_guard<std::mutex> inside(programLock);
    });
    blocked.start();
    waitFor([&] { return isWaiting.load(); });
    Procedure late(device, [](const Call&) {});
    EXPECT_EQ(late.start(), noErr);
    UInt32 isRunning = get<UInt32>(device, address(kAudioDevicePropertyDeviceIsRunning));
    EXPECT_EQ(isRunning, 1u);
    EXPECT_EQ(set<Float32>(device,
                           address(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeOutput, 1),
                           0.5f),
              noErr);
    lock.unlock();
    waitFor([&] { return late.calls() > 0; });
}

TEST(Procedures, StoppingOneDoesNotWaitForAnother)
{
    Device device(Device::paced());
    std::mutex programLock;
    std::atomic<bool> isWaiting{false};
    Procedure quick(device, [](const Call&) {});
    Procedure blocked(device, [&](const Call&) {
        isWaiting = true;
        const std::lock_guard<std::mutex> inside(programLock);
    });
    quick.start();
    std::unique_lock<std::mutex> lock(programLock);
    blocked.start();
    waitFor([&] { return isWaiting.load(); });
    EXPECT_EQ(quick.stop(), noErr);
    EXPECT_EQ(quick.remove(), noErr);
    lock.unlock();
    EXPECT_EQ(blocked.stop(), noErr);
}

} // namespace
