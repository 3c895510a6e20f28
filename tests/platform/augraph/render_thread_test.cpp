// Tests of graph calls from render threads, which are inside a unit's render call or a device's I/O cycle.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/graph_calls.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace test;

constexpr OSStatus cannotNow = kAUGraphErr_CannotDoInCurrentContext;

/// A render callback and I/O procedure whose first call runs the function `work`.
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

/// A running graph on a stepped device.
struct RunningGraph {
    explicit RunningGraph(Once& once) : device(44100, 2, 100), output(graph.add('auou', 'ahal'))
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

void expectNoCallWaits(const Graph& graph, AUNode node)
{
    for (const GraphCall& call : graphCalls(node)) {
        const OSStatus status = call.make(graph);
        if (call.mayWait)
            EXPECT_EQ(status, cannotNow) << call.name;
        else
            EXPECT_NE(status, cannotNow) << call.name << ": the lock is free";
    }
    EXPECT_EQ(DisposeAUGraph(graph), cannotNow);
    EXPECT_TRUE(graph.isOpen());
}

TEST(RenderThread, TheHeadsRenderCallMayStopTheGraph)
{
    Once once;
    RunningGraph running(once);
    once.work = [&] {
        expectNoCallWaits(running.graph, running.output);
        EXPECT_TRUE(running.graph.isRunning());
        EXPECT_EQ(AUGraphStart(running.graph), noErr) << "already running";
        EXPECT_EQ(AUGraphStop(running.graph), noErr);
        EXPECT_FALSE(running.graph.isRunning());
        EXPECT_EQ(AUGraphStart(running.graph), cannotNow)
            << "a stopped unit does not restart in the same render call";
    };
    EXPECT_EQ(running.device.step(1000), 100u) << "one cycle";
    EXPECT_EQ(once.calls, 1);
    ASSERT_EQ(AUGraphStart(running.graph), noErr);
    EXPECT_TRUE(running.graph.isRunning());
    EXPECT_EQ(running.graph.dispose(), noErr);
}

TEST(RenderThread, AnotherUnitsRenderCallCannotStartOrStop)
{
    Once silent{[] {}}, once;
    RunningGraph running(silent);
    const Unit other('genr');
    ASSERT_EQ(other.setCallback(Once::render, &once), noErr);
    ASSERT_EQ(AudioUnitInitialize(other), noErr);
    once.work = [&] {
        expectNoCallWaits(running.graph, running.output);
        EXPECT_TRUE(running.graph.isRunning());
        EXPECT_EQ(AUGraphStart(running.graph), cannotNow);
        EXPECT_EQ(AUGraphStop(running.graph), cannotNow);
    };
    List list(canonical(44100, 2), 10);
    const AudioTimeStamp time = sampleTime(0);
    ASSERT_EQ(AudioUnitRender(other, nullptr, &time, 0, 10, list.get()), noErr);
    EXPECT_EQ(once.calls, 1);
    EXPECT_EQ(AUGraphStop(running.graph), noErr) << "after the render call";
}

TEST(RenderThread, AnIOCycleCannotStartOrStop)
{
    Once silent{[] {}}, once;
    RunningGraph running(silent);
    SteppedDevice other(44100, 2, 100);
    for (SteppedDevice* device : {&running.device, &other}) {
        once = {[&] {
                    expectNoCallWaits(running.graph, running.output);
                    EXPECT_EQ(AUGraphStart(running.graph), cannotNow);
                    EXPECT_EQ(AUGraphStop(running.graph), cannotNow);
                },
                0};
        ASSERT_EQ(AudioDeviceAddIOProc(device->id(), Once::cycle, &once), noErr);
        ASSERT_EQ(AudioDeviceStart(device->id(), Once::cycle), noErr);
        device->step(200);
        EXPECT_EQ(once.calls, 2);
        ASSERT_EQ(AudioDeviceRemoveIOProc(device->id(), Once::cycle), noErr);
    }
    EXPECT_TRUE(running.graph.isRunning());
}

TEST(RenderThread, AnInvalidGraphIsParamErrInARenderCallToo)
{
    Once once;
    RunningGraph running(once);
    once.work = [&] {
        for (const GraphCall& call : graphCalls(1)) EXPECT_EQ(call.make(nullptr), paramErr) << call.name;
        EXPECT_EQ(AUGraphStart(nullptr), paramErr);
        EXPECT_EQ(AUGraphStop(nullptr), paramErr);
        EXPECT_EQ(DisposeAUGraph(nullptr), paramErr);
    };
    running.device.step(100);
    EXPECT_EQ(once.calls, 1);
}

TEST(RenderThread, ACallbackSetInARenderCallTakesEffectAtTheNextInitialisation)
{
    Once once;
    RunningGraph running(once);
    Feeder feeder(canonical(44100, 2));
    once.work = [&] { EXPECT_EQ(running.graph.setCallback(1, Feeder::callback, &feeder), noErr); };
    running.device.step(200);
    EXPECT_EQ(once.calls, 2);
    EXPECT_EQ(feeder.calls, 0);
    ASSERT_EQ(AUGraphUninitialize(running.graph), noErr);
    ASSERT_EQ(AUGraphInitialize(running.graph), noErr);
    ASSERT_EQ(AUGraphStart(running.graph), noErr);
    running.device.step(200);
    EXPECT_EQ(once.calls, 2);
    EXPECT_EQ(feeder.calls, 2);
}

/// A render callback that calls its graph until another thread, which waits for this render call to end,
/// holds the graph's lock.
struct BlockedRender {
    AUGraph graph = nullptr;
    std::atomic<bool> isInside{false}, callsStop{true};
    OSStatus stopped = 77;
    static OSStatus render(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                           AudioBufferList*)
    {
        BlockedRender& self = *static_cast<BlockedRender*>(context);
        self.isInside = true;
        UInt32 count = 0;
        while (AUGraphGetNodeCount(self.graph, &count) != cannotNow) std::this_thread::yield();
        if (self.callsStop) self.stopped = AUGraphStop(self.graph);
        Boolean isRunning = 0;
        EXPECT_EQ(AUGraphIsRunning(self.graph, &isRunning), noErr);
        return noErr;
    }
};

TEST(RenderThread, DoesNotBlockOnACallThatWaitsForIt)
{
    OSStatus (*const calls[])(AUGraph) = {AUGraphStop, AUGraphUninitialize, AUGraphClose, DisposeAUGraph};
    for (const auto call : calls)
        for (const bool callsStop : {false, true}) {
            SteppedDevice device(44100, 2, 100, false);
            device.makeDefault();
            AUGraph graph = nullptr;
            ASSERT_EQ(NewAUGraph(&graph), noErr);
            const AudioComponentDescription hal = {'auou', 'ahal', 'appl', 0, 0};
            AUNode node = 0;
            ASSERT_EQ(AUGraphAddNode(graph, &hal, &node), noErr);
            BlockedRender blocked;
            blocked.graph = graph;
            blocked.callsStop = callsStop;
            const AURenderCallbackStruct callback = {BlockedRender::render, &blocked};
            ASSERT_EQ(AUGraphSetNodeInputCallback(graph, node, 0, &callback), noErr);
            ASSERT_EQ(AUGraphOpen(graph), noErr);
            ASSERT_EQ(AUGraphInitialize(graph), noErr);
            ASSERT_EQ(AUGraphStart(graph), noErr);
            while (!blocked.isInside) std::this_thread::yield();
            EXPECT_EQ(call(graph), noErr);
            EXPECT_EQ(blocked.stopped, callsStop ? noErr : 77);
            if (call != DisposeAUGraph) {
                EXPECT_EQ(DisposeAUGraph(graph), noErr);
            }
        }
    EXPECT_EQ(alive("AUGraph"), 0u);
}

} // namespace
