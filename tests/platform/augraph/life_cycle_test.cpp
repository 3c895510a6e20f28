// Open, initialised, running, and back: every call in every state.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/calls.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

enum State { made, opened, initialized, running };
const char* const names[] = {"made", "open", "initialised", "running"};

State stateOf(const Graph& graph)
{
    if (graph.isRunning()) return running;
    if (graph.isInitialized()) return initialized;
    return graph.isOpen() ? opened : made;
}

void bring(const Graph& graph, State state)
{
    if (state >= opened) {
        ASSERT_EQ(AUGraphOpen(graph), noErr);
    }
    if (state >= initialized) {
        ASSERT_EQ(AUGraphInitialize(graph), noErr);
    }
    if (state >= running) {
        ASSERT_EQ(AUGraphStart(graph), noErr);
    }
}

constexpr OSStatus uninitialized = kAudioUnitErr_Uninitialized;
constexpr OSStatus noUnits = badComponentInstance;

OSStatus update(AUGraph graph) { return AUGraphUpdate(graph, nullptr); }

// clang-format off
const struct { const char* name; OSStatus (*make)(AUGraph); struct { OSStatus status; State after; } from[4]; } calls[] = {
    // call          from: made                 open                     initialised           running
    {"Open",         AUGraphOpen,         {{noErr, opened},       {noErr, opened},         {noErr, initialized}, {noErr, running}}},
    {"Initialize",   AUGraphInitialize,   {{uninitialized, made}, {noErr, initialized},    {noErr, initialized}, {noErr, running}}},
    {"Start",        AUGraphStart,        {{uninitialized, made}, {uninitialized, opened}, {noErr, running},     {noErr, running}}},
    {"Stop",         AUGraphStop,         {{noErr, made},         {noErr, opened},         {noErr, initialized}, {noErr, initialized}}},
    {"Update",       update,              {{noErr, made},         {noErr, opened},         {noErr, initialized}, {noErr, running}}},
    {"Uninitialize", AUGraphUninitialize, {{noUnits, made},       {noErr, opened},         {noErr, opened},      {noErr, opened}}},
    {"Close",        AUGraphClose,        {{noErr, made},         {noErr, made},           {noErr, made},        {noErr, made}}},
};
// clang-format on

TEST(LifeCycle, EveryCallInEveryState)
{
    for (const OSType output : {'genr', 'ahal', 'def ', 'sys '})
        for (const auto& call : calls)
            for (const State state : {made, opened, initialized, running}) {
                SCOPED_TRACE(std::string(call.name) + " when " + names[state]);
                SteppedDevice device(44100, 2, 512);
                device.makeDefault();
                device.makeDefault(kAudioHardwarePropertyDefaultSystemOutputDevice);
                const Graph graph;
                ASSERT_EQ(graph.setCallback(graph.add('auou', output), ignored, nullptr), noErr);
                bring(graph, state);
                ASSERT_EQ(stateOf(graph), state);
                const auto& fact = call.from[state];
                EXPECT_EQ(call.make(graph), fact.status);
                EXPECT_EQ(stateOf(graph), fact.after);
                const auto& again = call.from[fact.after];
                EXPECT_EQ(call.make(graph), again.status);
                EXPECT_EQ(stateOf(graph), again.after) << "twice is as good as once";
            }
    EXPECT_EQ(alive("AUGraph"), 0u);
    EXPECT_EQ(alive("ComponentInstance"), 0u);
}

TEST(LifeCycle, GoesRoundAndRound)
{
    SteppedDevice device(44100, 1, 100);
    const Graph graph;
    const AUNode output = graph.add('auou', 'ahal');
    for (int turn = 0; turn < 5; ++turn) {
        ASSERT_EQ(AUGraphOpen(graph), noErr);
        const AudioUnit unit = graph.unit(output);
        const AudioDeviceID id = device.id();
        ASSERT_EQ(AudioUnitSetProperty(unit, 2000, 0, 0, &id, sizeof id), noErr);
        for (int inner = 0; inner < 3; ++inner) {
            const auto format = canonical(44100, 1 + static_cast<UInt32>(inner) % 2);
            Feeder feeder(format);
            ASSERT_EQ(graph.setCallback(output, Feeder::callback, &feeder), noErr);
            ASSERT_EQ(AudioUnitSetProperty(unit, 8, 1, 0, &format, sizeof format), noErr);
            ASSERT_EQ(AUGraphInitialize(graph), noErr);
            for (int innermost = 0; innermost < 3; ++innermost) {
                device.played.clear();
                ASSERT_EQ(AUGraphStart(graph), noErr);
                EXPECT_EQ(device.step(100), 100u);
                for (UInt32 frame = 0; frame < 100; ++frame)
                    ASSERT_EQ(device.played[frame], noise(frame, 0)) << frame;
                ASSERT_EQ(AUGraphStop(graph), noErr);
                EXPECT_EQ(device.step(100), 0u);
            }
            ASSERT_EQ(AUGraphUninitialize(graph), noErr);
        }
        ASSERT_EQ(AUGraphClose(graph), noErr);
    }
}

TEST(LifeCycle, WithoutAnOutputThereIsNothingToStart)
{
    const Graph graph;
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    ASSERT_EQ(AUGraphInitialize(graph), noErr);
    EXPECT_EQ(AUGraphStart(graph), kAUGraphErr_OutputNodeErr);
    EXPECT_FALSE(graph.isRunning());
    EXPECT_EQ(AUGraphStop(graph), noErr);
}

TEST(LifeCycle, AnOutputThatHearsNothingIsNotInitialised)
{
    const Graph graph;
    const AUNode node = graph.add('auou', 'genr');
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    ASSERT_EQ(AUGraphInitialize(graph), noErr);
    EXPECT_EQ(AudioOutputUnitStart(graph.unit(node)), uninitialized);
    EXPECT_EQ(AUGraphStart(graph), uninitialized);
    ASSERT_EQ(graph.setCallback(node, ignored, nullptr), noErr);
    EXPECT_EQ(AUGraphStart(graph), uninitialized) << "it waits for the update";
    ASSERT_EQ(AUGraphUpdate(graph, nullptr), noErr);
    EXPECT_EQ(AUGraphStart(graph), noErr);
}

TEST(LifeCycle, TheOutputUnitSaysWhetherItRuns)
{
    SteppedDevice device(44100, 2, 512);
    device.makeDefault();
    const Graph graph;
    const AUNode node = graph.add('auou', 'ahal');
    ASSERT_EQ(graph.setCallback(node, ignored, nullptr), noErr);
    bring(graph, initialized);
    ASSERT_EQ(AudioOutputUnitStart(graph.unit(node)), noErr) << "past the graph";
    EXPECT_TRUE(graph.isRunning());
    ASSERT_EQ(AudioOutputUnitStop(graph.unit(node)), noErr);
    EXPECT_FALSE(graph.isRunning());

    KVXPlatformRefuseStart(device.id(), kAudioHardwareUnspecifiedError);
    EXPECT_EQ(AUGraphStart(graph), kAudioHardwareUnspecifiedError) << "the device's answer";
    EXPECT_FALSE(graph.isRunning());
    KVXPlatformRefuseStart(device.id(), 0);
    EXPECT_EQ(AUGraphStart(graph), noErr) << "and it can be tried again";
    EXPECT_TRUE(graph.isRunning());
}

TEST(LifeCycle, TheOutputOfARunningGraphStays)
{
    SteppedDevice device(44100, 2, 512);
    device.makeDefault();
    for (const OSType output : {'genr', 'ahal'}) {
        const Graph graph;
        const AUNode node = graph.add('auou', output);
        ASSERT_EQ(graph.setCallback(node, ignored, nullptr), noErr);
        bring(graph, running);
        EXPECT_EQ(AUGraphRemoveNode(graph, node), kAUGraphErr_OutputNodeErr);
        EXPECT_TRUE(graph.isRunning());
        ASSERT_EQ(AUGraphStop(graph), noErr);
        EXPECT_EQ(AUGraphRemoveNode(graph, node), noErr);
        EXPECT_EQ(AUGraphStart(graph), kAUGraphErr_OutputNodeErr);
        EXPECT_EQ(alive("ComponentInstance"), 1u) << "until the update";
        ASSERT_EQ(AUGraphUpdate(graph, nullptr), noErr);
        EXPECT_EQ(alive("ComponentInstance"), 0u);

        const AUNode next = graph.add('auou', output);
        ASSERT_EQ(graph.setCallback(next, ignored, nullptr), noErr);
        ASSERT_EQ(AUGraphUpdate(graph, nullptr), noErr);
        ASSERT_EQ(AUGraphStart(graph), noErr);
        EXPECT_TRUE(graph.isRunning()) << "another output takes over";
    }
}

TEST(LifeCycle, UpdateTellsWhetherAllIsDone)
{
    const Graph graph;
    const AUNode node = graph.add('auou', 'genr');
    Boolean isDone = 7;
    ASSERT_EQ(AUGraphUpdate(graph, &isDone), noErr);
    EXPECT_EQ(isDone, 0) << "not before the graph is initialised";
    bring(graph, opened);
    ASSERT_EQ(AUGraphUpdate(graph, &isDone), noErr);
    EXPECT_EQ(isDone, 0);
    bring(graph, initialized);
    ASSERT_EQ(AUGraphUpdate(graph, &isDone), noErr);
    EXPECT_EQ(isDone, 1) << "nothing waits";
    ASSERT_EQ(graph.setCallback(node, ignored, nullptr, 5), noErr);
    ASSERT_EQ(AUGraphUpdate(graph, &isDone), kAudioUnitErr_InvalidElement);
    EXPECT_EQ(isDone, 0);
    EXPECT_EQ(AUGraphUpdate(nullptr, &isDone), paramErr);
    EXPECT_EQ(isDone, 0);
}

} // namespace
