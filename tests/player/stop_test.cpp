// "Stop", "Close" and the destructor: all three stop the player and free its buffers.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/player/slice.h"
#include "tests/support/c_library_spy.h"

#include <gtest/gtest.h>

namespace {

using spy::Calls;
using test::PlayerObject;

class PlayerStop : public test::FreshPlatform {};

void destroy(const PlayerObject& object)
{
    reinterpret_cast<void (*)(REALobjectStruct*)>(coreAudioPlayerClass.destructor)(object);
}

const struct {
    const char* name;
    void (*stop)(const PlayerObject&);
} stops[] = {
    {"Stop", [](const PlayerObject& object) { test::members.call<void>("Stop", object); }},
    {"Close", [](const PlayerObject& object) { test::members.call<void>("Close", object); }},
    {"destruction", destroy},
};

TEST_F(PlayerStop, StopOnAStoppedPlayerFreesAllBuffersAndKeepsThePosition)
{
    for (const auto& each : stops) {
        SCOPED_TRACE(each.name);
        device_spy::reset();
        const long before = c_library_spy::liveBlocks();
        const PlayerObject object;
        for (int i = 0; i < 200; ++i) ASSERT_TRUE(object.add({1, 2, 3}));
        object->current = test::itemOf({4});
        object->outputPosition = 12.5;
        object->outputPositionRelative = 2.5;
        object->baseSampleIndex = 10;

        each.stop(object);
        EXPECT_EQ(spy::calls(), Calls()) << "no wait, no platform call";
        EXPECT_EQ(c_library_spy::liveBlocks(), before);
        EXPECT_EQ(test::members.call<HostInteger>("FreeSpace", object), 200);
        EXPECT_EQ(object->current.data, nullptr);
        EXPECT_EQ(object->stopRequested, 0);
        EXPECT_EQ(test::members.get<double>(object, "OutputPosition"), 12.5);
        EXPECT_EQ(test::members.get<double>(object, "OutputPositionRelative"), 2.5);
        EXPECT_EQ(object->baseSampleIndex, 10);
        ASSERT_TRUE(object.start());
        EXPECT_EQ(object->outputPosition, 0.0) << "until the next start";
    }
}

TEST_F(PlayerStop, StopWaitsInTicksUntilTheProcedureIsRemoved)
{
    for (const auto& each : stops) {
        SCOPED_TRACE(each.name);
        device_spy::reset();
        const long before = c_library_spy::liveBlocks();
        const PlayerObject object;
        spy::name(reinterpret_cast<const void*>(object->ioProc), "procedure");
        ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6}));
        ASSERT_TRUE(object.add({7}));
        ASSERT_TRUE(object.start());
        test::render(object, 4);
        spy::forgetCalls();

        std::vector<int> requests;
        spy::answer("Delay").during = [&] {
            requests.push_back(object->stopRequested);
            EXPECT_EQ(c_library_spy::liveBlocks(), before + 2)
                << "nothing is freed while the player may render";
            if (requests.size() == 3) test::render(object, 4);
        };
        each.stop(object);
        EXPECT_EQ(requests, (std::vector<int>{1, 1, 1}));
        EXPECT_EQ(spy::calls(), (Calls{"Delay(1)", "Delay(1)", "Delay(1)", "AudioDeviceStop(2, procedure)",
                                       "AudioDeviceRemoveIOProc(2, procedure)"}));
        EXPECT_EQ(object->isRunning, 0);
        EXPECT_EQ(object->stopRequested, 0);
        EXPECT_EQ(c_library_spy::liveBlocks(), before);
        EXPECT_EQ(object->outputPosition, 4.0);
        EXPECT_TRUE(device_spy::installed().empty());
    }
}

TEST_F(PlayerStop, StopWithNoUnderflowWaitsUntilTheQueueIsEmpty)
{
    const PlayerObject object;
    test::members.set<HostBoolean>(object, "NoUnderflow", 1);
    ASSERT_TRUE(object.add({1, 2, 3, 4, 5, 6}));
    ASSERT_TRUE(object.start());
    int ticks = 0;
    spy::answer("Delay").during = [&] {
        ++ticks;
        if (ticks == 1) { // this cycle drops the stop request, and the player keeps running
            EXPECT_EQ(test::render(object, 4), (std::vector<float>{0, 0, 0, 0}));
            EXPECT_EQ(object->stopRequested, 0);
            EXPECT_EQ(object->hadUnderflow, 1);
        }
        if (ticks == 2) {
            EXPECT_EQ(test::render(object, 4), (std::vector<float>{1, 2, 3, 4}));
        }
        if (ticks == 3) {
            EXPECT_EQ(test::render(object, 4), (std::vector<float>{5, 6, 0, 0}));
        }
        if (ticks == 4) {
            EXPECT_EQ(test::render(object, 4), (std::vector<float>{0, 0, 0, 0}));
        }
        if (ticks == 5) {
            EXPECT_EQ(object->isRunning, 1);
            test::members.set<HostBoolean>(object, "NoUnderflow", 0);
            test::render(object, 4);
        }
    };
    test::members.call<void>("Stop", object);
    EXPECT_EQ(ticks, 5);
    EXPECT_EQ(object->isRunning, 0);
    EXPECT_EQ(object->stopRequested, 0);
}

TEST_F(PlayerStop, AnUnderflowDuringTheWaitEndsIt)
{
    const PlayerObject object;
    ASSERT_TRUE(object.start());
    spy::answer("Delay").during = [&] {
        object->stopRequested = 0; // a cycle with noUnderflow set would clear the stop request like this
        test::render(object, 4);   // a cycle without data and without a stop request
    };
    test::members.call<void>("Stop", object);
    EXPECT_EQ(spy::count("Delay"), 1);
    EXPECT_EQ(object->isRunning, 0);
}

TEST_F(PlayerStop, RepeatedCloseAndDestructionAreHarmless)
{
    const long before = c_library_spy::liveBlocks();
    {
        const PlayerObject object;
        ASSERT_TRUE(object.add({1, 2}));
        ASSERT_TRUE(object.start());
        test::render(object, 1);
        spy::answer("Delay").during = [&] { test::render(object, 1); };
        test::members.call<void>("Close", object);
        spy::forgetCalls();
        test::members.call<void>("Close", object);
        test::members.call<void>("Stop", object);
        EXPECT_EQ(spy::calls(), Calls());
        destroy(object);
    }
    EXPECT_EQ(c_library_spy::liveBlocks(), before);
}

TEST_F(PlayerStop, AClosedPlayerRestartsWithItsSettings)
{
    const PlayerObject object;
    test::members.set<float>(object, "SampleRate", 22050);
    test::members.set<HostInteger>(object, "NumberOfChannels", 2);
    test::members.call<void>("Close", object);
    EXPECT_EQ(object->sampleRate, 22050.0f);
    EXPECT_EQ(object->numberOfChannels, 2);
    ASSERT_TRUE(object.add({1, -1, 2, -2}));
    EXPECT_TRUE(object.start());
    EXPECT_EQ(test::render(object, 3, 2), (std::vector<float>{1, -1, 1.5, -1.5, 2, -2}));
}

TEST_F(PlayerStop, StopWithoutTheLockFreesOnlyTheCurrentBuffer)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    object->current = test::itemOf({3});
    c_library_spy::refuseLock(1);
    c_library_spy::begin();
    test::members.call<void>("Stop", object);
    c_library_spy::end();
    EXPECT_EQ(object->queueCount, 1);
    EXPECT_EQ(object->current.data, nullptr);
}

} // namespace
