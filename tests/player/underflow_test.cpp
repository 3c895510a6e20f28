// What the I/O procedure does when there is nothing to play, or when it shall stop.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/platform_spy.h"

#include <gtest/gtest.h>

namespace {

using test::PlayerObject;
using test::Slice;
using Floats = std::vector<float>;
using Calls = std::vector<std::string>;

class PlayerUnderflow : public test::FreshPlatform {
protected:
    /// A started player, the calls of its start forgotten.
    static void start(const PlayerObject& object)
    {
        ASSERT_TRUE(object.start());
        spy::name(reinterpret_cast<const void*>(object->ioProc), "procedure");
        spy::forgetCalls();
    }

    /// One cycle of four mono frames on device 9.
    static Floats cycle(const PlayerObject& object)
    {
        Slice slice({test::shape(1, 4)});
        EXPECT_EQ(test::cycle(object, slice, 9), 0);
        return slice.floats();
    }

    const Floats silence = {0, 0, 0, 0};
    const Calls leaving = {"AudioDeviceStop(9, procedure)", "AudioDeviceRemoveIOProc(9, procedure)"};
};

TEST_F(PlayerUnderflow, StartWithAnEmptyQueueIsTrueAndTheFirstCycleStops)
{
    const PlayerObject object;
    start(object);
    EXPECT_EQ(test::get<HostBoolean>(object, "IsRunning"), 1);
    EXPECT_EQ(cycle(object), silence);
    EXPECT_EQ(test::get<HostBoolean>(object, "IsRunning"), 0);
    EXPECT_EQ(spy::calls(), leaving) << "the device that called is the one that is left";
    EXPECT_EQ(object->hadUnderflow, 0);
    EXPECT_EQ(object->stopRequested, 0);
    EXPECT_EQ(object->outputPosition, 0.0);
}

TEST_F(PlayerUnderflow, TheCycleAfterTheLastSampleStopsThePlayer)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3, 4}));
    start(object);
    EXPECT_EQ(cycle(object), (Floats{1, 2, 3, 4}));
    EXPECT_EQ(object->isRunning, 1);
    EXPECT_EQ(spy::calls(), Calls());
    EXPECT_EQ(cycle(object), silence);
    EXPECT_EQ(object->isRunning, 0);
    EXPECT_EQ(spy::calls(), leaving);
    EXPECT_EQ(object->hadUnderflow, 0);
    EXPECT_EQ(object->outputPosition, 4.0);
}

TEST_F(PlayerUnderflow, WithNoUnderflowItKeepsRunningAndSaysSo)
{
    const PlayerObject object;
    test::set<HostBoolean>(object, "NoUnderflow", 1);
    ASSERT_TRUE(object.add({1, 2, 3, 4}));
    start(object);
    EXPECT_EQ(cycle(object), (Floats{1, 2, 3, 4}));
    EXPECT_EQ(test::get<HostBoolean>(object, "HadUnderflow"), 0);
    const double relative = object->outputPositionRelative;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(cycle(object), silence);
        EXPECT_EQ(test::get<HostBoolean>(object, "HadUnderflow"), 1);
        EXPECT_EQ(object->isRunning, 1);
        EXPECT_EQ(object->outputPosition, 4.0) << "the position waits";
        EXPECT_EQ(object->outputPositionRelative, relative);
    }
    EXPECT_EQ(spy::calls(), Calls());
}

TEST_F(PlayerUnderflow, RunningDryInsideACycleIsNoUnderflowYet)
{
    for (const HostBoolean noUnderflow : {0, 1}) {
        spy::reset();
        const PlayerObject object;
        test::set<HostBoolean>(object, "NoUnderflow", noUnderflow);
        ASSERT_TRUE(object.add({1, 2}));
        start(object);
        EXPECT_EQ(cycle(object), (Floats{1, 2, 0, 0}));
        EXPECT_EQ(object->hadUnderflow, 0);
        EXPECT_EQ(object->isRunning, 1);
        EXPECT_EQ(object->outputPosition, 4.0);
        EXPECT_EQ(spy::calls(), Calls());
    }
}

TEST_F(PlayerUnderflow, OnlyTheHostClearsHadUnderflow)
{
    const PlayerObject object;
    test::set<HostBoolean>(object, "NoUnderflow", 1);
    start(object);
    cycle(object);
    ASSERT_EQ(object->hadUnderflow, 1);
    ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6, 7, 8}));
    cycle(object);
    EXPECT_EQ(object->hadUnderflow, 1) << "playing on does not clear it";
    ASSERT_TRUE(object.start());
    EXPECT_EQ(object->hadUnderflow, 1) << "nor a start";
    test::set<HostBoolean>(object, "HadUnderflow", 0);
    cycle(object);
    EXPECT_EQ(object->hadUnderflow, 0);
    cycle(object);
    EXPECT_EQ(object->hadUnderflow, 1) << "the next one is noted again";
}

TEST_F(PlayerUnderflow, SamplesBeforeTheReadPositionAreSkippedWhenDataReturns)
{
    const PlayerObject object;
    test::set<HostBoolean>(object, "NoUnderflow", 1);
    ASSERT_TRUE(object.add({1, 2}));
    start(object);
    EXPECT_EQ(cycle(object), (Floats{1, 2, 0, 0})); // position 4; what follows begins at 2
    EXPECT_EQ(cycle(object), silence);
    ASSERT_TRUE(object.add({10, 11, 12, 13, 14, 15, 16}));
    EXPECT_EQ(cycle(object), (Floats{12, 13, 14, 15}));
    EXPECT_EQ(object->outputPosition, 8.0);
    EXPECT_EQ(object->outputPositionRelative, 4.0);
    EXPECT_EQ(object->baseSampleIndex, 2);
}

TEST_F(PlayerUnderflow, WithNoUnderflowClearedTheNextDryCycleStops)
{
    const PlayerObject object;
    test::set<HostBoolean>(object, "NoUnderflow", 1);
    start(object);
    EXPECT_EQ(cycle(object), silence);
    test::set<HostBoolean>(object, "NoUnderflow", 0);
    EXPECT_EQ(cycle(object), silence);
    EXPECT_EQ(object->isRunning, 0);
    EXPECT_EQ(spy::calls(), leaving);
}

// ---- a stop request ----

TEST_F(PlayerUnderflow, AStopRequestIsHonouredBeforeAnyDataIsPlayed)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6}));
    ASSERT_TRUE(object.add({7}));
    start(object);
    cycle(object);
    object->stopRequested = 1;
    EXPECT_EQ(cycle(object), silence);
    EXPECT_EQ(object->isRunning, 0);
    EXPECT_EQ(spy::calls(), leaving);
    EXPECT_EQ(object->stopRequested, 1) << "whoever asked clears it";
    EXPECT_EQ(object->hadUnderflow, 0);
    EXPECT_EQ(object->outputPosition, 4.0);
    EXPECT_EQ(object.current(), (Floats{1, 2, 3, 4, 5, 6})) << "buffers are freed by whoever asked";
    EXPECT_EQ(object->queueCount, 1);
}

TEST_F(PlayerUnderflow, AStopRequestIsDroppedWhileThePlayerMustNotRunDry)
{
    for (const bool hasData : {true, false}) {
        const PlayerObject object;
        test::set<HostBoolean>(object, "NoUnderflow", 1);
        if (hasData) {
            ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6}));
        }
        start(object);
        object->stopRequested = 1;
        EXPECT_EQ(cycle(object), silence);
        EXPECT_EQ(object->stopRequested, 0);
        EXPECT_EQ(object->hadUnderflow, 1);
        EXPECT_EQ(object->isRunning, 1);
        EXPECT_EQ(object->outputPosition, 0.0);
        EXPECT_EQ(object->queueCount, hasData ? 1 : 0) << "nothing is taken";
        EXPECT_EQ(spy::calls(), Calls());
        if (hasData) {
            EXPECT_EQ(cycle(object), (Floats{1, 2, 3, 4})) << "and it plays on";
        }
    }
}

// ---- leaving the device ----

TEST_F(PlayerUnderflow, IsRunningStaysSetUntilTheProcedureIsRemoved)
{
    for (const bool isStopRequested : {false, true}) {
        spy::reset();
        const PlayerObject object;
        start(object);
        object->stopRequested = isStopRequested;
        std::vector<int> seen;
        spy::platform().during[spy::Function::stop] = [&] { seen.push_back(object->isRunning); };
        spy::platform().during[spy::Function::removeIOProc] = [&] { seen.push_back(object->isRunning); };
        EXPECT_EQ(cycle(object), silence);
        EXPECT_EQ(seen, (std::vector<int>{1, 1}));
        EXPECT_EQ(object->isRunning, 0);
    }
}

TEST_F(PlayerUnderflow, TheBuffersAreSilentBeforeTheDeviceIsLeft)
{
    const PlayerObject object;
    start(object);
    Slice slice({test::shape(1, 4)});
    Floats seen;
    spy::platform().during[spy::Function::stop] = [&] { seen = slice.floats(); };
    test::cycle(object, slice);
    EXPECT_EQ(seen, silence);
}

// A device that is gone refuses everything; the player ends all the same.
TEST_F(PlayerUnderflow, ItLeavesADeviceThatRefuses)
{
    spy::platform().refusal[spy::Function::stop] = kAudioHardwareBadDeviceError;
    spy::platform().refusal[spy::Function::removeIOProc] = kAudioHardwareBadDeviceError;
    const PlayerObject object;
    start(object);
    EXPECT_EQ(cycle(object), silence);
    EXPECT_EQ(spy::calls(), leaving);
    EXPECT_EQ(object->isRunning, 0);
}

TEST_F(PlayerUnderflow, ALockThatFailsIsAnUnderflow)
{
    for (const HostBoolean noUnderflow : {0, 1}) {
        spy::reset();
        const PlayerObject object;
        test::set<HostBoolean>(object, "NoUnderflow", noUnderflow);
        ASSERT_TRUE(object.add({1, 2, 3, 4, 5}));
        start(object);
        Slice slice({test::shape(1, 4)});
        watched::refuseLock(1);
        watched::begin();
        test::cycle(object, slice, 9);
        watched::end();
        EXPECT_EQ(slice.floats(), silence);
        EXPECT_EQ(object->isRunning, noUnderflow);
        EXPECT_EQ(object->hadUnderflow, noUnderflow);
        EXPECT_EQ(object->queueCount, 1);
        EXPECT_EQ(spy::calls(), noUnderflow ? Calls() : leaving);
        if (noUnderflow) {
            EXPECT_EQ(cycle(object), (Floats{1, 2, 3, 4}));
        }
    }
}

// Taking the next buffer in the middle of a slice waits for the lock, too; without it there is silence, and
// the next cycle goes on with what waits.
TEST_F(PlayerUnderflow, ALockThatFailsInsideASliceIsSilenceThere)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    ASSERT_TRUE(object.add({3, 4, 5, 6}));
    start(object);
    test::render(object, 1);
    Slice slice({test::shape(1, 2)});
    watched::refuseLock(1);
    watched::begin();
    test::cycle(object, slice, 9);
    watched::end();
    EXPECT_EQ(slice.floats(), (Floats{2, 0}));
    EXPECT_EQ(object->queueCount, 1);
    EXPECT_EQ(object->baseSampleIndex, 2);
    EXPECT_EQ(test::render(object, 2), (Floats{4, 5})) << "position 3 of a time line on which it begins at 2";
}

} // namespace
