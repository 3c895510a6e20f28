// Tests of graphs that several threads call, and of graphs that are disposed of while they run.
#include "tests/platform/audiounit/fragile.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/graph_calls.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

using namespace test;

AUGraph newRunning(Fragile& fragile, OSType output = 'ahal')
{
    AUGraph graph = nullptr;
    AUNode node = 0;
    const AudioComponentDescription description = {'auou', output, 'appl', 0, 0};
    const AURenderCallbackStruct callback = {Fragile::callback, &fragile};
    EXPECT_EQ(NewAUGraph(&graph), noErr);
    EXPECT_EQ(AUGraphAddNode(graph, &description, &node), noErr);
    EXPECT_EQ(AUGraphSetNodeInputCallback(graph, node, 0, &callback), noErr);
    EXPECT_EQ(AUGraphOpen(graph), noErr);
    EXPECT_EQ(AUGraphInitialize(graph), noErr);
    EXPECT_EQ(AUGraphStart(graph), noErr);
    return graph;
}

void expectNothingAlive()
{
    EXPECT_EQ(alive("AUGraph"), 0u);
    EXPECT_TRUE(eventually([] { return alive("ComponentInstance") == 0; }))
        << "a device may use its unit a little longer";
    EXPECT_EQ(alive("IOProc"), 0u);
}

TEST(GraphThreads, DisposingARunningGraphEndsItsCallback)
{
    SteppedDevice device(48000, 2, 16, false);
    device.makeDefault();
    for (int round = 0; round < 200; ++round) {
        auto fragile = std::make_unique<Fragile>();
        const AUGraph graph = newRunning(*fragile, round % 2 ? 'ahal' : 'def ');
        while (fragile->calls < round % 3) std::this_thread::yield();
        ASSERT_EQ(DisposeAUGraph(graph), noErr);
        ASSERT_FALSE(fragile->isInside);
    }
    expectNothingAlive();
}

TEST(GraphThreads, AGraphMayBeDisposedWhileOtherThreadsCallIt)
{
    SteppedDevice device(48000, 2, 16, false);
    device.makeDefault();
    std::atomic<AUGraph> graph{nullptr};
    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
    for (int each = 0; each < 2; ++each)
        threads.emplace_back([&, each] {
            Boolean is = 0;
            AUNode node = 0;
            for (int i = each; !isOver; ++i) {
                const AUGraph g = graph;
                OSStatus status = noErr;
                switch (i % 6) {
                case 0:
                    status = AUGraphIsRunning(g, &is);
                    break;
                case 1:
                    status = AUGraphStop(g);
                    break;
                case 2:
                    status = AUGraphStart(g);
                    break;
                case 3:
                    status = AUGraphInitialize(g);
                    break;
                case 4:
                    status = AUGraphGetIndNode(g, 0, &node);
                    break;
                case 5:
                    status = each ? DisposeAUGraph(g) : AUGraphIsOpen(g, &is);
                    break;
                }
                EXPECT_TRUE(status == noErr || status == paramErr) << status << ", call " << i % 6;
                std::this_thread::yield();
            }
        });
    for (int round = 0; round < 200; ++round) {
        auto fragile = std::make_unique<Fragile>();
        const AUGraph created = newRunning(*fragile);
        graph = created;
        std::this_thread::yield();
        graph = nullptr;
        const OSStatus status = DisposeAUGraph(created);
        ASSERT_TRUE(status == noErr || status == paramErr) << "another thread may dispose of it first";
        while (status && alive("AUGraph")) std::this_thread::yield();
        ASSERT_FALSE(fragile->isInside);
    }
    isOver = true;
    for (std::thread& thread : threads) thread.join();
    expectNothingAlive();
}

TEST(GraphThreads, CallsFromSeveralThreadsLeaveAValidGraph)
{
    SteppedDevice device(48000, 2, 16, false);
    device.makeDefault();
    Fragile fragile;
    const AUGraph graph = newRunning(fragile);
    AUNode node = 0;
    ASSERT_EQ(AUGraphGetIndNode(graph, 0, &node), noErr);
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        for (int i = 0; i < 100; ++i) AUGraphStart(graph), AUGraphStop(graph);
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 50; ++i) AUGraphUninitialize(graph), AUGraphInitialize(graph);
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 20; ++i) AUGraphClose(graph), AUGraphOpen(graph), AUGraphInitialize(graph);
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i)
            for (const GraphCall& call : graphCalls(node))
                if (!call.mayWait) call.make(graph);
    });
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(DisposeAUGraph(graph), noErr);
    expectNothingAlive();
}

TEST(GraphThreads, GraphsOnOneDeviceAreIndependent)
{
    SteppedDevice device(48000, 2, 16, false);
    device.makeDefault();
    std::vector<std::thread> threads;
    for (int each = 0; each < 4; ++each)
        threads.emplace_back([] {
            for (int round = 0; round < 30; ++round) {
                Fragile fragile;
                const AUGraph graph = newRunning(fragile);
                while (fragile.calls < round % 3) std::this_thread::yield();
                EXPECT_EQ(DisposeAUGraph(graph), noErr);
                EXPECT_FALSE(fragile.isInside);
            }
        });
    for (std::thread& thread : threads) thread.join();
    expectNothingAlive();
}

} // namespace
