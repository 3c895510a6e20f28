// Tests of the states of a graph, with every call in every state.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/graph_calls.h"

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

// clang-format off
const struct { const char* name; OSStatus (*make)(AUGraph); struct { OSStatus status; State after; } from[4]; } calls[] = {
    // call          from: made                 open                     initialised           running
    {"Open",         AUGraphOpen,         {{noErr, opened},       {noErr, opened},         {noErr, initialized}, {noErr, running}}},
    {"Initialize",   AUGraphInitialize,   {{uninitialized, made}, {noErr, initialized},    {noErr, initialized}, {noErr, running}}},
    {"Start",        AUGraphStart,        {{uninitialized, made}, {uninitialized, opened}, {noErr, running},     {noErr, running}}},
    {"Stop",         AUGraphStop,         {{noErr, made},         {noErr, opened},         {noErr, initialized}, {noErr, initialized}}},
    {"Uninitialize", AUGraphUninitialize, {{noUnits, made},       {noErr, opened},         {noErr, opened},      {noErr, opened}}},
    {"Close",        AUGraphClose,        {{noErr, made},         {noErr, made},           {noErr, made},        {noErr, made}}},
};
// clang-format on

TEST(GraphLifeCycle, EveryCallInEveryState)
{
    for (const OSType output : {'genr', 'ahal', 'def ', 'sys '})
        for (const auto& call : calls)
            for (const State state : {made, opened, initialized, running}) {
                SCOPED_TRACE(std::string(call.name) + " when " + names[state]);
                SteppedDevice device(44100, 2, 512);
                device.makeDefault();
                device.makeDefault(kAudioHardwarePropertyDefaultSystemOutputDevice);
                const Graph graph;
                ASSERT_EQ(graph.setCallback(graph.add('auou', output), emptySource, nullptr), noErr);
                bring(graph, state);
                ASSERT_EQ(stateOf(graph), state);
                const auto& fact = call.from[state];
                EXPECT_EQ(call.make(graph), fact.status);
                EXPECT_EQ(stateOf(graph), fact.after);
                const auto& again = call.from[fact.after];
                EXPECT_EQ(call.make(graph), again.status);
                EXPECT_EQ(stateOf(graph), again.after) << "a second call changes nothing";
            }
    EXPECT_EQ(alive("AUGraph"), 0u);
    EXPECT_EQ(alive("ComponentInstance"), 0u);
}

TEST(GraphLifeCycle, EveryStateCanBeReachedAgain)
{
    SteppedDevice device(44100, 1, 100);
    const Graph graph;
    const AUNode output = graph.add('auou', 'ahal');
    for (int opening = 0; opening < 5; ++opening) {
        ASSERT_EQ(AUGraphOpen(graph), noErr);
        const AudioUnit unit = graph.unit(output);
        const AudioDeviceID id = device.id();
        ASSERT_EQ(AudioUnitSetProperty(unit, 2000, 0, 0, &id, sizeof id), noErr);
        for (int initialisation = 0; initialisation < 3; ++initialisation) {
            const auto format = canonical(44100, 1 + static_cast<UInt32>(initialisation) % 2);
            Feeder feeder(format);
            ASSERT_EQ(graph.setCallback(output, Feeder::callback, &feeder), noErr);
            ASSERT_EQ(AudioUnitSetProperty(unit, 8, 1, 0, &format, sizeof format), noErr);
            ASSERT_EQ(AUGraphInitialize(graph), noErr);
            for (int run = 0; run < 3; ++run) {
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

TEST(GraphLifeCycle, AGraphWithoutAnOutputNodeCannotStart)
{
    const Graph graph;
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    ASSERT_EQ(AUGraphInitialize(graph), noErr);
    EXPECT_EQ(AUGraphStart(graph), kAUGraphErr_OutputNodeErr);
    EXPECT_FALSE(graph.isRunning());
    EXPECT_EQ(AUGraphStop(graph), noErr);
}

TEST(GraphLifeCycle, AnOutputWithoutASourceIsNotInitialised)
{
    const Graph graph;
    const AUNode node = graph.add('auou', 'genr');
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    ASSERT_EQ(AUGraphInitialize(graph), noErr);
    EXPECT_EQ(AudioOutputUnitStart(graph.unit(node)), uninitialized);
    EXPECT_EQ(AUGraphStart(graph), uninitialized);
    ASSERT_EQ(graph.setCallback(node, emptySource, nullptr), noErr);
    EXPECT_EQ(AUGraphStart(graph), uninitialized) << "the callback takes effect at the next initialisation";
    ASSERT_EQ(AUGraphUninitialize(graph), noErr);
    ASSERT_EQ(AUGraphInitialize(graph), noErr);
    EXPECT_EQ(AUGraphStart(graph), noErr);
}

TEST(GraphLifeCycle, IsRunningIsTheStateOfTheOutputUnit)
{
    SteppedDevice device(44100, 2, 512);
    device.makeDefault();
    const Graph graph;
    const AUNode node = graph.add('auou', 'ahal');
    ASSERT_EQ(graph.setCallback(node, emptySource, nullptr), noErr);
    bring(graph, initialized);
    ASSERT_EQ(AudioOutputUnitStart(graph.unit(node)), noErr) << "not through the graph";
    EXPECT_TRUE(graph.isRunning());
    ASSERT_EQ(AudioOutputUnitStop(graph.unit(node)), noErr);
    EXPECT_FALSE(graph.isRunning());

    KVXPlatformRefuseStart(device.id(), kAudioHardwareUnspecifiedError);
    EXPECT_EQ(AUGraphStart(graph), kAudioHardwareUnspecifiedError) << "the device's status";
    EXPECT_FALSE(graph.isRunning());
    KVXPlatformRefuseStart(device.id(), 0);
    EXPECT_EQ(AUGraphStart(graph), noErr) << "after a failed start";
    EXPECT_TRUE(graph.isRunning());
}

} // namespace
