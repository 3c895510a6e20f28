// The behaviour of the I/O procedure without data, and after a stop request.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/device_spy.h"

#include <gtest/gtest.h>

namespace {

using test::PlayerObject;
using test::Slice;
using Floats = std::vector<float>;
using spy::Calls;

class PlayerUnderflow : public test::FreshPlatform {
protected:
    /// Start the player and clear the record of the platform calls.
    static void start(const PlayerObject& object)
    {
        ASSERT_TRUE(object.start());
        spy::name(reinterpret_cast<const void*>(object->ioProc), "procedure");
        spy::forgetCalls();
    }

    /// Run one cycle of four mono frames on device 9.
    static Floats runCycle(const PlayerObject& object)
    {
        Slice slice({test::layout(1, 4)});
        EXPECT_EQ(test::runCycle(object, slice, 9), 0);
        return slice.floats();
    }

    const Floats silence = {0, 0, 0, 0};
    const Calls removal = {"AudioDeviceStop(9, procedure)", "AudioDeviceRemoveIOProc(9, procedure)"};
};

TEST_F(PlayerUnderflow, AStartWithAnEmptyQueueStopsInTheFirstCycle)
{
    const PlayerObject object;
    start(object);
    EXPECT_EQ(test::members.get<HostBoolean>(object, "IsRunning"), 1);
    EXPECT_EQ(runCycle(object), silence);
    EXPECT_EQ(test::members.get<HostBoolean>(object, "IsRunning"), 0);
    EXPECT_EQ(spy::calls(), removal) << "the calling device is stopped";
    EXPECT_EQ(object->hadUnderflow, 0);
    EXPECT_EQ(object->stopRequested, 0);
    EXPECT_EQ(object->outputPosition, 0.0);
}

TEST_F(PlayerUnderflow, TheCycleAfterTheLastSampleStopsThePlayer)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3, 4}));
    start(object);
    EXPECT_EQ(runCycle(object), (Floats{1, 2, 3, 4}));
    EXPECT_EQ(object->isRunning, 1);
    EXPECT_EQ(spy::calls(), Calls());
    EXPECT_EQ(runCycle(object), silence);
    EXPECT_EQ(object->isRunning, 0);
    EXPECT_EQ(spy::calls(), removal);
    EXPECT_EQ(object->hadUnderflow, 0);
    EXPECT_EQ(object->outputPosition, 4.0);
}

TEST_F(PlayerUnderflow, WithNoUnderflowThePlayerRunsOnAndSetsHadUnderflow)
{
    const PlayerObject object;
    test::members.set<HostBoolean>(object, "NoUnderflow", 1);
    ASSERT_TRUE(object.add({1, 2, 3, 4}));
    start(object);
    EXPECT_EQ(runCycle(object), (Floats{1, 2, 3, 4}));
    EXPECT_EQ(test::members.get<HostBoolean>(object, "HadUnderflow"), 0);
    const double relative = object->outputPositionRelative;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(runCycle(object), silence);
        EXPECT_EQ(test::members.get<HostBoolean>(object, "HadUnderflow"), 1);
        EXPECT_EQ(object->isRunning, 1);
        EXPECT_EQ(object->outputPosition, 4.0) << "the position stays";
        EXPECT_EQ(object->outputPositionRelative, relative);
    }
    EXPECT_EQ(spy::calls(), Calls());
}

TEST_F(PlayerUnderflow, AnEmptyQueueInsideACycleIsNoUnderflow)
{
    for (const HostBoolean noUnderflow : {0, 1}) {
        device_spy::reset();
        const PlayerObject object;
        test::members.set<HostBoolean>(object, "NoUnderflow", noUnderflow);
        ASSERT_TRUE(object.add({1, 2}));
        start(object);
        EXPECT_EQ(runCycle(object), (Floats{1, 2, 0, 0}));
        EXPECT_EQ(object->hadUnderflow, 0);
        EXPECT_EQ(object->isRunning, 1);
        EXPECT_EQ(object->outputPosition, 4.0);
        EXPECT_EQ(spy::calls(), Calls());
    }
}

TEST_F(PlayerUnderflow, OnlyTheHostClearsHadUnderflow)
{
    const PlayerObject object;
    test::members.set<HostBoolean>(object, "NoUnderflow", 1);
    start(object);
    runCycle(object);
    ASSERT_EQ(object->hadUnderflow, 1);
    ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6, 7, 8}));
    runCycle(object);
    EXPECT_EQ(object->hadUnderflow, 1) << "rendering does not clear it";
    ASSERT_TRUE(object.start());
    EXPECT_EQ(object->hadUnderflow, 1) << "a start does not clear it";
    test::members.set<HostBoolean>(object, "HadUnderflow", 0);
    runCycle(object);
    EXPECT_EQ(object->hadUnderflow, 0);
    runCycle(object);
    EXPECT_EQ(object->hadUnderflow, 1) << "the next underflow sets it again";
}

TEST_F(PlayerUnderflow, SamplesBeforeTheReadPositionAreSkippedWhenDataReturns)
{
    const PlayerObject object;
    test::members.set<HostBoolean>(object, "NoUnderflow", 1);
    ASSERT_TRUE(object.add({1, 2}));
    start(object);
    // The position is 4 now, but the next buffer will begin at 2.
    EXPECT_EQ(runCycle(object), (Floats{1, 2, 0, 0}));
    EXPECT_EQ(runCycle(object), silence);
    ASSERT_TRUE(object.add({10, 11, 12, 13, 14, 15, 16}));
    EXPECT_EQ(runCycle(object), (Floats{12, 13, 14, 15}));
    EXPECT_EQ(object->outputPosition, 8.0);
    EXPECT_EQ(object->outputPositionRelative, 4.0);
    EXPECT_EQ(object->baseSampleIndex, 2);
}

TEST_F(PlayerUnderflow, ThePlayerStopsOnceNoUnderflowIsCleared)
{
    const PlayerObject object;
    test::members.set<HostBoolean>(object, "NoUnderflow", 1);
    start(object);
    EXPECT_EQ(runCycle(object), silence);
    test::members.set<HostBoolean>(object, "NoUnderflow", 0);
    EXPECT_EQ(runCycle(object), silence);
    EXPECT_EQ(object->isRunning, 0);
    EXPECT_EQ(spy::calls(), removal);
}

// ---- a stop request ----

TEST_F(PlayerUnderflow, AStopRequestComesBeforeTheData)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6}));
    ASSERT_TRUE(object.add({7}));
    start(object);
    runCycle(object);
    object->stopRequested = 1;
    EXPECT_EQ(runCycle(object), silence);
    EXPECT_EQ(object->isRunning, 0);
    EXPECT_EQ(spy::calls(), removal);
    EXPECT_EQ(object->stopRequested, 1) << "the requesting thread clears it";
    EXPECT_EQ(object->hadUnderflow, 0);
    EXPECT_EQ(object->outputPosition, 4.0);
    EXPECT_EQ(object.current(), (Floats{1, 2, 3, 4, 5, 6})) << "the requesting thread frees the buffers";
    EXPECT_EQ(object->queueCount, 1);
}

TEST_F(PlayerUnderflow, NoUnderflowDropsAStopRequest)
{
    for (const bool hasData : {true, false}) {
        const PlayerObject object;
        test::members.set<HostBoolean>(object, "NoUnderflow", 1);
        if (hasData) {
            ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6}));
        }
        start(object);
        object->stopRequested = 1;
        EXPECT_EQ(runCycle(object), silence);
        EXPECT_EQ(object->stopRequested, 0);
        EXPECT_EQ(object->hadUnderflow, 1);
        EXPECT_EQ(object->isRunning, 1);
        EXPECT_EQ(object->outputPosition, 0.0);
        EXPECT_EQ(object->queueCount, hasData ? 1 : 0) << "nothing is taken";
        EXPECT_EQ(spy::calls(), Calls());
        if (hasData) {
            EXPECT_EQ(runCycle(object), (Floats{1, 2, 3, 4})) << "the next cycle renders the data";
        }
    }
}

// ---- removal of the I/O procedure from the device ----

TEST_F(PlayerUnderflow, IsRunningStaysSetUntilTheProcedureIsRemoved)
{
    for (const bool isStopRequested : {false, true}) {
        device_spy::reset();
        const PlayerObject object;
        start(object);
        object->stopRequested = isStopRequested;
        std::vector<int> seen;
        spy::answer("AudioDeviceStop").during = [&] { seen.push_back(object->isRunning); };
        spy::answer("AudioDeviceRemoveIOProc").during = [&] { seen.push_back(object->isRunning); };
        EXPECT_EQ(runCycle(object), silence);
        EXPECT_EQ(seen, (std::vector<int>{1, 1}));
        EXPECT_EQ(object->isRunning, 0);
    }
}

TEST_F(PlayerUnderflow, TheBuffersAreSilentBeforeTheDeviceIsStopped)
{
    const PlayerObject object;
    start(object);
    Slice slice({test::layout(1, 4)});
    Floats seen;
    spy::answer("AudioDeviceStop").during = [&] { seen = slice.floats(); };
    test::runCycle(object, slice);
    EXPECT_EQ(seen, silence);
}

// A device that no longer exists refuses every call.
TEST_F(PlayerUnderflow, ThePlayerStopsOnADeviceThatRefuses)
{
    spy::answer("AudioDeviceStop").status = kAudioHardwareBadDeviceError;
    spy::answer("AudioDeviceRemoveIOProc").status = kAudioHardwareBadDeviceError;
    const PlayerObject object;
    start(object);
    EXPECT_EQ(runCycle(object), silence);
    EXPECT_EQ(spy::calls(), removal);
    EXPECT_EQ(object->isRunning, 0);
}

TEST_F(PlayerUnderflow, ALockThatFailsIsAnUnderflow)
{
    for (const HostBoolean noUnderflow : {0, 1}) {
        device_spy::reset();
        const PlayerObject object;
        test::members.set<HostBoolean>(object, "NoUnderflow", noUnderflow);
        ASSERT_TRUE(object.add({1, 2, 3, 4, 5}));
        start(object);
        Slice slice({test::layout(1, 4)});
        c_library_spy::refuseLock(1);
        c_library_spy::begin();
        test::runCycle(object, slice, 9);
        c_library_spy::end();
        EXPECT_EQ(slice.floats(), silence);
        EXPECT_EQ(object->isRunning, noUnderflow);
        EXPECT_EQ(object->hadUnderflow, noUnderflow);
        EXPECT_EQ(object->queueCount, 1);
        EXPECT_EQ(spy::calls(), noUnderflow ? Calls() : removal);
        if (noUnderflow) {
            EXPECT_EQ(runCycle(object), (Floats{1, 2, 3, 4}));
        }
    }
}

// The frames after the failed lock are silence. The next cycle continues with the waiting buffer.
TEST_F(PlayerUnderflow, ALockThatFailsInsideASliceGivesSilence)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    ASSERT_TRUE(object.add({3, 4, 5, 6}));
    start(object);
    test::render(object, 1);
    Slice slice({test::layout(1, 2)});
    c_library_spy::refuseLock(1);
    c_library_spy::begin();
    test::runCycle(object, slice, 9);
    c_library_spy::end();
    EXPECT_EQ(slice.floats(), (Floats{2, 0}));
    EXPECT_EQ(object->queueCount, 1);
    EXPECT_EQ(object->baseSampleIndex, 2);
    EXPECT_EQ(test::render(object, 2), (Floats{4, 5})) << "position 3; the buffer begins at 2";
}

} // namespace
