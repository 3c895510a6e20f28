// Changes while it runs: from one slice to the next, the former sound or the new one, never a wrong one.
#include "tests/platform/augraph/marks.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

Float32 hundred = 100, thousand = 1000;

class Update : public testing::Test {
protected:
    void start()
    {
        ASSERT_EQ(AUGraphInitialize(graph), noErr);
        ASSERT_EQ(AUGraphStart(graph), noErr);
    }
    void disconnect(AUNode node) { ASSERT_EQ(AUGraphDisconnectNodeInput(graph, node, 0), noErr); }
    /// The graph is updated, and sounds so then; before it sounded as `before`.
    void update(Float32 before, Float32 after)
    {
        EXPECT_EQ(marks.hear(), before) << "not without the update";
        Boolean isDone = 0;
        ASSERT_EQ(AUGraphUpdate(graph, &isDone), noErr);
        EXPECT_EQ(isDone, 1);
        EXPECT_EQ(marks.hear(), after);
        EXPECT_TRUE(graph.isRunning());
    }
    Marks marks{3};
    Graph& graph = marks.graph;
    const AUNode output = marks.output, a = marks.nodes[0], b = marks.nodes[1], c = marks.nodes[2];
};

TEST_F(Update, ExchangesACallback)
{
    ASSERT_EQ(graph.setCallback(output, constant, &hundred), noErr);
    start();
    ASSERT_EQ(graph.setCallback(output, constant, &thousand), noErr);
    update(100, 1000);
    ASSERT_EQ(graph.setCallback(output, nullptr, nullptr), noErr);
    update(1000, kAudioUnitErr_NoConnection);
    ASSERT_EQ(graph.setCallback(output, constant, &hundred), noErr);
    update(kAudioUnitErr_NoConnection, 100);
}

TEST_F(Update, PutsAUnitInBetween)
{
    ASSERT_EQ(graph.setCallback(output, constant, &hundred), noErr);
    start();
    disconnect(output);
    ASSERT_EQ(graph.setCallback(a, constant, &thousand), noErr);
    ASSERT_EQ(graph.connect(a, output), noErr);
    EXPECT_FALSE(isInitialized(marks.unit(0)));
    update(100, 1001);
    EXPECT_TRUE(isInitialized(marks.unit(0)));
    disconnect(output);
    ASSERT_EQ(graph.connect(b, output), noErr);
    ASSERT_EQ(graph.connect(a, b), noErr);
    update(1001, 1003);
}

TEST_F(Update, OpensAndInitialisesWhatIsNew)
{
    ASSERT_EQ(graph.connect(a, output), noErr);
    start();
    const AUNode late = marks.add();
    ASSERT_NE(graph.unit(late), nullptr);
    ASSERT_EQ(graph.connect(late, a), noErr);
    EXPECT_FALSE(isInitialized(graph.unit(late)));
    update(1, 9);
}

TEST_F(Update, TurnsTheOrderOfTwoUnitsRound)
{
    ASSERT_EQ(graph.setCallback(a, constant, &hundred), noErr);
    ASSERT_EQ(graph.connect(a, b), noErr);
    ASSERT_EQ(graph.connect(b, output), noErr);
    start();
    for (int turn = 0; turn < 3; ++turn) {
        ASSERT_EQ(AUGraphClearConnections(graph), noErr);
        ASSERT_EQ(graph.connect(b, a), noErr);
        ASSERT_EQ(graph.connect(a, output), noErr);
        ASSERT_EQ(graph.setCallback(b, constant, &thousand), noErr);
        update(103, 1003);
        ASSERT_EQ(AUGraphClearConnections(graph), noErr);
        ASSERT_EQ(graph.connect(b, output), noErr);
        ASSERT_EQ(graph.connect(a, b), noErr);
        ASSERT_EQ(graph.setCallback(a, constant, &hundred), noErr);
        update(1003, 103);
    }
}

TEST_F(Update, TakesAUnitAway)
{
    ASSERT_EQ(graph.connect(a, b), noErr);
    ASSERT_EQ(graph.connect(b, c), noErr);
    ASSERT_EQ(graph.connect(c, output), noErr);
    start();
    const AudioUnit unit = marks.unit(1);
    ASSERT_EQ(AUGraphRemoveNode(graph, b), noErr);
    EXPECT_EQ(AUGraphNodeInfo(graph, b, nullptr, nullptr), kAUGraphErr_NodeNotFound) << "gone at once";
    ASSERT_EQ(graph.connect(a, c), noErr) << "the input that heard it is free";
    EXPECT_TRUE(isInitialized(unit)) << "and still plays";
    update(7, 5);
    EXPECT_EQ(AudioUnitReset(unit, 0, 0), badComponentInstance);
    EXPECT_EQ(alive("ComponentInstance"), 3u);
    ASSERT_EQ(AUGraphRemoveNode(graph, a), noErr);
    update(5, 4);
}

TEST_F(Update, TakesAllAway)
{
    ASSERT_EQ(graph.connect(a, b), noErr);
    ASSERT_EQ(graph.connect(b, output), noErr);
    start();
    ASSERT_EQ(AUGraphClearConnections(graph), noErr);
    update(3, kAudioUnitErr_NoConnection);
    EXPECT_TRUE(isInitialized(marks.unit(0))) << "until the graph is uninitialised";
    ASSERT_EQ(AUGraphUninitialize(graph), noErr);
    ASSERT_EQ(AUGraphInitialize(graph), noErr);
    EXPECT_FALSE(isInitialized(marks.unit(0)));
}

TEST_F(Update, StopsAtTheFirstErrorAndKeepsTheRest)
{
    ASSERT_EQ(graph.setCallback(a, constant, &hundred), noErr);
    ASSERT_EQ(graph.connect(a, output), noErr);
    start();
    // b -> c -> output, instead of a; b cannot be initialised at first.
    disconnect(output);
    ASSERT_EQ(graph.connect(b, c), noErr);
    ASSERT_EQ(graph.connect(c, output), noErr);
    failInitialization(1);
    Boolean isDone = 1;
    EXPECT_EQ(AUGraphUpdate(graph, &isDone), failure);
    EXPECT_EQ(isDone, 0);
    EXPECT_EQ(marks.hear(), 101) << "what was not reached is as it was";
    EXPECT_TRUE(graph.isRunning());
    EXPECT_FALSE(isInitialized(marks.unit(2)));
    update(101, 6);
}

TEST_F(Update, KeepsWhatAnInputHeardWhenTheNewIsRefused)
{
    ASSERT_EQ(graph.connect(a, output), noErr);
    start();
    disconnect(output);
    const AudioStreamBasicDescription mono = canonical(44100, 1);
    ASSERT_EQ(AudioUnitSetProperty(marks.unit(1), 8, 2, 0, &mono, sizeof mono), noErr);
    ASSERT_EQ(graph.connect(b, output), noErr);
    EXPECT_EQ(AUGraphUpdate(graph, nullptr), kAudioUnitErr_FormatNotSupported)
        << "the output is initialised and keeps its format";
    EXPECT_EQ(marks.hear(), 1);
    EXPECT_EQ(AUGraphUpdate(graph, nullptr), kAudioUnitErr_FormatNotSupported);
    disconnect(output);
    ASSERT_EQ(graph.connect(a, output), noErr);
    update(1, 1);
    disconnect(output);
    ASSERT_EQ(graph.connect(b, output), noErr);
    ASSERT_EQ(AUGraphUninitialize(graph), noErr);
    start();
    EXPECT_EQ(marks.hear(), 2) << "a new initialisation takes the format over";
}

TEST_F(Update, RefusesACircle)
{
    ASSERT_EQ(graph.connect(a, b), noErr);
    ASSERT_EQ(graph.connect(b, output), noErr);
    start();
    ASSERT_EQ(graph.connect(b, a), noErr);
    EXPECT_EQ(AUGraphUpdate(graph, nullptr), kAUGraphErr_InvalidConnection);
    EXPECT_EQ(marks.hear(), 3) << "as it was";
    disconnect(a);
    update(3, 3);
}

TEST_F(Update, WithoutAChangeDoesNothing)
{
    ASSERT_EQ(graph.connect(a, output), noErr);
    start();
    initializedInOrder().clear();
    update(1, 1);
    EXPECT_TRUE(initializedInOrder().empty());
    const AURenderCallbackStruct callersOwn = {constant, &hundred};
    ASSERT_EQ(AudioUnitSetProperty(graph.unit(output), kAudioUnitProperty_SetRenderCallback, 1, 0,
                                   &callersOwn, sizeof callersOwn),
              noErr);
    update(100, 100);
}

TEST_F(Update, RemovedUnitsGoWithAnythingThatEndsTheGraphToo)
{
    OSStatus (*const calls[])(AUGraph) = {AUGraphUninitialize, AUGraphClose};
    for (const auto call : calls) {
        Marks others(2);
        ASSERT_EQ(others.graph.connect(others.nodes[0], others.nodes[1]), noErr);
        ASSERT_EQ(AUGraphInitialize(others.graph), noErr);
        const AudioUnit unit = others.unit(0);
        ASSERT_EQ(AUGraphRemoveNode(others.graph, others.nodes[0]), noErr);
        EXPECT_TRUE(isInitialized(unit));
        ASSERT_EQ(call(others.graph), noErr);
        EXPECT_EQ(AudioUnitReset(unit, 0, 0), badComponentInstance);
    }
    const std::uint32_t before = alive("ComponentInstance");
    {
        Marks others(2);
        ASSERT_EQ(others.graph.connect(others.nodes[0], others.nodes[1]), noErr);
        ASSERT_EQ(AUGraphInitialize(others.graph), noErr);
        ASSERT_EQ(AUGraphRemoveNode(others.graph, others.nodes[0]), noErr);
    }
    EXPECT_EQ(alive("ComponentInstance"), before);
}

} // namespace
