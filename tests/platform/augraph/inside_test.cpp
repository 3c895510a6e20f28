// Calls from threads that must not wait: inside a slice, inside a device's cycle.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/calls.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace test;

constexpr OSStatus cannotNow = kAUGraphErr_CannotDoInCurrentContext;

/// Runs something once, inside whatever calls back.
struct Once {
    std::function<void()> work;
    int calls = 0;
    void run()
    {
        if (!calls++) work();
    }
    static OSStatus render(void* self, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                           AudioBufferList*)
    {
        static_cast<Once*>(self)->run();
        return noErr;
    }
    static OSStatus cycle(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
                          AudioBufferList*, const AudioTimeStamp*, void* self)
    {
        static_cast<Once*>(self)->run();
        return noErr;
    }
};

/// A graph that plays, on a device turned by hand.
struct Playing {
    explicit Playing(Once& once) : device(44100, 2, 100), output(graph.add('auou', 'ahal'))
    {
        device.makeDefault();
        EXPECT_EQ(graph.setCallback(output, Once::render, &once), noErr);
        EXPECT_EQ(AUGraphOpen(graph), noErr);
        EXPECT_EQ(AUGraphInitialize(graph), noErr);
        EXPECT_EQ(AUGraphStart(graph), noErr);
    }
    SteppedDevice device;
    Graph graph;
    AUNode output;
};

void expectNoWaiting(const Graph& graph, AUNode node)
{
    for (const GraphCall& call : callsAbout(node)) {
        const OSStatus status = call.make(graph);
        if (call.mayWait)
            EXPECT_EQ(status, cannotNow) << call.name;
        else
            EXPECT_NE(status, cannotNow) << call.name << ": nobody else is at it";
    }
    EXPECT_EQ(DisposeAUGraph(graph), cannotNow);
    EXPECT_TRUE(graph.isOpen());
}

TEST(Inside, TheHeadsOwnSliceMayStopItAndWaitsForNothing)
{
    Once once;
    Playing playing(once);
    once.work = [&] {
        expectNoWaiting(playing.graph, playing.output);
        EXPECT_TRUE(playing.graph.isRunning());
        EXPECT_EQ(AUGraphStart(playing.graph), noErr) << "it runs";
        EXPECT_EQ(AUGraphStop(playing.graph), noErr);
        EXPECT_FALSE(playing.graph.isRunning());
        EXPECT_EQ(AUGraphStart(playing.graph), cannotNow) << "stopped in this slice, it is stopped";
    };
    EXPECT_EQ(playing.device.step(1000), 100u) << "that was its last slice";
    EXPECT_EQ(once.calls, 1);
    ASSERT_EQ(AUGraphStart(playing.graph), noErr);
    EXPECT_TRUE(playing.graph.isRunning());
    EXPECT_EQ(playing.graph.dispose(), noErr);
}

TEST(Inside, ASliceOfAnotherUnitIsToldToTryLater)
{
    Once silent{[] {}}, once;
    Playing playing(silent);
    const Unit other('genr');
    ASSERT_EQ(other.setCallback(Once::render, &once), noErr);
    ASSERT_EQ(AudioUnitInitialize(other), noErr);
    once.work = [&] {
        expectNoWaiting(playing.graph, playing.output);
        EXPECT_TRUE(playing.graph.isRunning());
        EXPECT_EQ(AUGraphStart(playing.graph), cannotNow);
        EXPECT_EQ(AUGraphStop(playing.graph), cannotNow);
    };
    List list(canonical(44100, 2), 10);
    const AudioTimeStamp time = sampleTime(0);
    ASSERT_EQ(AudioUnitRender(other, nullptr, &time, 0, 10, list.get()), noErr);
    EXPECT_EQ(once.calls, 1);
    EXPECT_EQ(AUGraphStop(playing.graph), noErr) << "outside it is as always";
}

TEST(Inside, ADevicesCycleIsToldToTryLater)
{
    Once silent{[] {}}, once;
    Playing playing(silent);
    SteppedDevice other(44100, 2, 100);
    for (SteppedDevice* device : {&playing.device, &other}) {
        once = {[&] {
                    expectNoWaiting(playing.graph, playing.output);
                    EXPECT_EQ(AUGraphStart(playing.graph), cannotNow);
                    EXPECT_EQ(AUGraphStop(playing.graph), cannotNow);
                },
                0};
        ASSERT_EQ(AudioDeviceAddIOProc(device->id(), Once::cycle, &once), noErr);
        ASSERT_EQ(AudioDeviceStart(device->id(), Once::cycle), noErr);
        device->step(200);
        EXPECT_EQ(once.calls, 2);
        ASSERT_EQ(AudioDeviceRemoveIOProc(device->id(), Once::cycle), noErr);
    }
    EXPECT_TRUE(playing.graph.isRunning());
}

TEST(Inside, AGraphThatIsNoneIsParamErrEvenThere)
{
    Once once;
    Playing playing(once);
    once.work = [&] {
        for (const GraphCall& call : callsAbout(1)) EXPECT_EQ(call.make(nullptr), paramErr) << call.name;
        EXPECT_EQ(AUGraphStart(nullptr), paramErr);
        EXPECT_EQ(AUGraphStop(nullptr), paramErr);
        EXPECT_EQ(DisposeAUGraph(nullptr), paramErr);
    };
    playing.device.step(100);
    EXPECT_EQ(once.calls, 1);
}

TEST(Inside, WhatIsNotedThereTakesEffectWithTheNextUpdate)
{
    Once once;
    Playing playing(once);
    Feeder feeder(canonical(44100, 2));
    once.work = [&] { EXPECT_EQ(playing.graph.setCallback(1, Feeder::callback, &feeder), noErr); };
    playing.device.step(200);
    EXPECT_EQ(once.calls, 2);
    EXPECT_EQ(feeder.calls, 0);
    ASSERT_EQ(AUGraphUpdate(playing.graph, nullptr), noErr);
    playing.device.step(200);
    EXPECT_EQ(once.calls, 2);
    EXPECT_EQ(feeder.calls, 2);
}

/// Asks for the graph until it is held by the thread that waits for this very slice.
struct Waited {
    AUGraph graph = nullptr;
    std::atomic<bool> isInside{false}, saysStop{true};
    OSStatus stopped = 77;
    static OSStatus render(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                           AudioBufferList*)
    {
        Waited& self = *static_cast<Waited*>(context);
        self.isInside = true;
        UInt32 count = 0;
        while (AUGraphGetNodeCount(self.graph, &count) != cannotNow) std::this_thread::yield();
        if (self.saysStop) self.stopped = AUGraphStop(self.graph);
        Boolean isRunning = 0;
        EXPECT_EQ(AUGraphIsRunning(self.graph, &isRunning), noErr);
        return noErr;
    }
};

TEST(Inside, NobodyWaitsForWhoWaitsForIt)
{
    OSStatus (*const calls[])(AUGraph) = {AUGraphStop, AUGraphUninitialize, AUGraphClose, DisposeAUGraph};
    for (const auto call : calls)
        for (const bool saysStop : {false, true}) {
            SteppedDevice device(44100, 2, 100, false);
            device.makeDefault();
            AUGraph graph = nullptr;
            ASSERT_EQ(NewAUGraph(&graph), noErr);
            const AudioComponentDescription hal = {'auou', 'ahal', 'appl', 0, 0};
            AUNode node = 0;
            ASSERT_EQ(AUGraphAddNode(graph, &hal, &node), noErr);
            Waited waited;
            waited.graph = graph;
            waited.saysStop = saysStop;
            const AURenderCallbackStruct callback = {Waited::render, &waited};
            ASSERT_EQ(AUGraphSetNodeInputCallback(graph, node, 0, &callback), noErr);
            ASSERT_EQ(AUGraphOpen(graph), noErr);
            ASSERT_EQ(AUGraphInitialize(graph), noErr);
            ASSERT_EQ(AUGraphStart(graph), noErr);
            while (!waited.isInside) std::this_thread::yield();
            EXPECT_EQ(call(graph), noErr);
            EXPECT_EQ(waited.stopped, saysStop ? noErr : 77);
            if (call != DisposeAUGraph) {
                EXPECT_EQ(DisposeAUGraph(graph), noErr);
            }
        }
    EXPECT_EQ(alive("AUGraph"), 0u);
}

} // namespace
