// Graphs that are disposed while they play and while others speak to them.
#include "tests/platform/audiounit/fragile.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/calls.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

using namespace test;

AUGraph newPlaying(Fragile& fragile, OSType output = 'ahal')
{
    AUGraph graph = nullptr;
    AUNode node = 0;
    const AudioComponentDescription description = {'auou', output, 'appl', 0, 0};
    const AURenderCallbackStruct callback = {Fragile::callback, &fragile};
    EXPECT_EQ(NewAUGraph(&graph), noErr);
    EXPECT_EQ(AUGraphAddNode(graph, &description, &node), noErr);
    EXPECT_EQ(AUGraphSetNodeInputCallback(graph, node, 0, &callback), noErr);
    EXPECT_EQ(AUGraphAddRenderNotify(graph, ignored, nullptr), noErr);
    EXPECT_EQ(AUGraphOpen(graph), noErr);
    EXPECT_EQ(AUGraphInitialize(graph), noErr);
    EXPECT_EQ(AUGraphStart(graph), noErr);
    return graph;
}

void expectNothingAlive()
{
    EXPECT_EQ(alive("AUGraph"), 0u);
    EXPECT_TRUE(eventually([] { return alive("ComponentInstance") == 0; }))
        << "the last use of a unit by its device ends by itself";
    EXPECT_EQ(alive("IOProc"), 0u);
}

TEST(Threads, DisposingARunningGraphEndsItsCallback)
{
    SteppedDevice device(48000, 2, 16, false);
    device.makeDefault();
    for (int turn = 0; turn < 200; ++turn) {
        auto fragile = std::make_unique<Fragile>();
        const AUGraph graph = newPlaying(*fragile, turn % 2 ? 'ahal' : 'def ');
        while (fragile->calls < turn % 3) std::this_thread::yield();
        ASSERT_EQ(DisposeAUGraph(graph), noErr);
        ASSERT_FALSE(fragile->isInside);
    }
    expectNothingAlive();
}

TEST(Threads, DisposingAGraphThatOthersSpeakTo)
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
                    status = AUGraphUpdate(g, nullptr);
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
    for (int turn = 0; turn < 200; ++turn) {
        auto fragile = std::make_unique<Fragile>();
        const AUGraph mine = newPlaying(*fragile);
        graph = mine;
        std::this_thread::yield();
        graph = nullptr;
        const OSStatus status = DisposeAUGraph(mine);
        ASSERT_TRUE(status == noErr || status == paramErr) << "somebody else did, or is at it";
        while (status && alive("AUGraph")) std::this_thread::yield();
        ASSERT_FALSE(fragile->isInside);
    }
    isOver = true;
    for (std::thread& thread : threads) thread.join();
    expectNothingAlive();
}

TEST(Threads, CallsFromManyThreadsLeaveItInOrder)
{
    SteppedDevice device(48000, 2, 16, false);
    device.makeDefault();
    Fragile fragile;
    const AUGraph graph = newPlaying(fragile);
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
            for (const GraphCall& call : callsAbout(node))
                if (!call.mayWait) call.make(graph);
    });
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(DisposeAUGraph(graph), noErr);
    expectNothingAlive();
}

// A unit comes in between, hears another callback and goes again, while the device turns.
TEST(Threads, UpdatesWhileItRuns)
{
    SteppedDevice device(44100, 2, 16, false);
    device.makeDefault();
    Fragile direct, through;
    const AUGraph graph = newPlaying(direct);
    const AudioComponentDescription converter = {'aufc', 'conv', 'appl', 0, 0};
    const AURenderCallbackStruct callbacks[] = {{Fragile::callback, &direct}, {Fragile::callback, &through}};
    for (int turn = 0; turn < 100; ++turn) {
        const int before = through.calls;
        AUNode between = 0;
        ASSERT_EQ(AUGraphAddNode(graph, &converter, &between), noErr);
        ASSERT_EQ(AUGraphSetNodeInputCallback(graph, between, 0, &callbacks[1]), noErr);
        ASSERT_EQ(AUGraphDisconnectNodeInput(graph, 1, 0), noErr);
        ASSERT_EQ(AUGraphConnectNodeInput(graph, between, 0, 1, 0), noErr);
        ASSERT_EQ(AUGraphUpdate(graph, nullptr), noErr);
        ASSERT_TRUE(eventually([&] { return through.calls > before; }));
        ASSERT_EQ(AUGraphRemoveNode(graph, between), noErr);
        ASSERT_EQ(AUGraphSetNodeInputCallback(graph, 1, 0, &callbacks[0]), noErr);
        ASSERT_EQ(AUGraphUpdate(graph, nullptr), noErr);
        ASSERT_FALSE(through.isInside) << "the unit that called it is closed";
    }
    ASSERT_EQ(DisposeAUGraph(graph), noErr);
    expectNothingAlive();
}

TEST(Threads, EveryGraphOnADeviceEndsForItself)
{
    SteppedDevice device(48000, 2, 16, false);
    device.makeDefault();
    std::vector<std::thread> threads;
    for (int each = 0; each < 4; ++each)
        threads.emplace_back([] {
            for (int turn = 0; turn < 30; ++turn) {
                Fragile fragile;
                const AUGraph graph = newPlaying(fragile);
                while (fragile.calls < turn % 3) std::this_thread::yield();
                EXPECT_EQ(DisposeAUGraph(graph), noErr);
                EXPECT_FALSE(fragile.isInside);
            }
        });
    for (std::thread& thread : threads) thread.join();
    expectNothingAlive();
}

} // namespace
