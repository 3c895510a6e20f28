// Nodes: their numbers, their order, their units.
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/calls.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

UInt32 countOf(const Graph& graph)
{
    UInt32 count = 77;
    EXPECT_EQ(AUGraphGetNodeCount(graph, &count), noErr);
    return count;
}

TEST(Nodes, AreNumberedFromOneAndNeverAgainTheSame)
{
    const Graph graph;
    EXPECT_EQ(countOf(graph), 0u);
    for (AUNode number = 1; number <= 5; ++number) {
        EXPECT_EQ(graph.add('auou', 'genr'), number);
        EXPECT_EQ(countOf(graph), 1u);
        ASSERT_EQ(AUGraphRemoveNode(graph, number), noErr);
        EXPECT_EQ(AUGraphRemoveNode(graph, number), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(countOf(graph), 0u);
    }
    const Graph other;
    EXPECT_EQ(other.add('auou', 'genr'), 1) << "each graph counts for itself";
}

TEST(Nodes, AreTheFirstComponentThatFits)
{
    // clang-format off
    const struct { AudioComponentDescription looking; OSStatus status; OSType found; const char* why; } facts[] = {
        {{'auou', 'genr', 'appl', 0, 0},          noErr, 'genr', "named in full"},
        {{'auou', 'genr', 0, 0, 0},               noErr, 'genr', "any maker"},
        {{'auou', 0, 0, 0, 0},                    noErr, 'ahal', "the first output unit"},
        {{'auou', 'genr', 'appl', 0xFFFF, 0},     noErr, 'genr', "flags without a mask are not compared"},
        {{'auou', 'none', 'appl', 0, 0},          kAUGraphErr_InvalidAudioUnit, 0, "no such subtype"},
        {{'nope', 'genr', 'appl', 0, 0},          kAUGraphErr_InvalidAudioUnit, 0, "no such type"},
        {{'auou', 'genr', 'else', 0, 0},          kAUGraphErr_InvalidAudioUnit, 0, "no such maker"},
        {{'auou', 'genr', 'appl', 1, 1},          kAUGraphErr_InvalidAudioUnit, 0, "flags that it lacks"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const bool isOpen : {false, true}) {
            SCOPED_TRACE(fact.why);
            const Graph graph;
            if (isOpen) {
                ASSERT_EQ(AUGraphOpen(graph), noErr);
            }
            AUNode node = 77;
            ASSERT_EQ(AUGraphAddNode(graph, &fact.looking, &node), fact.status);
            EXPECT_EQ(node, fact.status ? 77 : 1);
            EXPECT_EQ(countOf(graph), fact.status ? 0u : 1u);
            if (fact.status) continue;

            AudioComponentDescription description = {1, 2, 3, 4, 5};
            AudioUnit unit = reinterpret_cast<AudioUnit>(&node);
            ASSERT_EQ(AUGraphNodeInfo(graph, node, &description, &unit), noErr);
            EXPECT_EQ(description.componentType, 'auou');
            EXPECT_EQ(description.componentSubType, fact.found);
            EXPECT_EQ(description.componentManufacturer, 'appl');
            EXPECT_EQ(description.componentFlags, 0u);
            EXPECT_EQ(description.componentFlagsMask, 0u);
            EXPECT_EQ(unit != nullptr, isOpen) << "a node of an open graph is open at once";
        }
}

TEST(Nodes, OfOutputThereIsOne)
{
    for (const OSType first : {'genr', 'ahal', 'def ', 'sys '})
        for (const OSType second : {'genr', 'ahal', 'def ', 'sys '}) {
            const Graph graph;
            ASSERT_EQ(graph.add('auou', first), 1);
            OSStatus status = noErr;
            EXPECT_EQ(graph.add('auou', second, &status), 0);
            EXPECT_EQ(status, kAUGraphErr_OutputNodeErr);
            ASSERT_EQ(AUGraphRemoveNode(graph, 1), noErr);
            EXPECT_EQ(graph.add('auou', second), 2) << "the place is free again";
        }
}

TEST(Nodes, HaveUnitsWhileTheGraphIsOpen)
{
    const Graph graph;
    const AUNode node = graph.add('auou', 'genr');
    EXPECT_EQ(graph.unit(node), nullptr);
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    const AudioUnit unit = graph.unit(node);
    ASSERT_NE(unit, nullptr);
    EXPECT_EQ(AudioUnitReset(unit, 0, 0), noErr);
    EXPECT_EQ(alive("ComponentInstance"), 1u);
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    EXPECT_EQ(graph.unit(node), unit) << "opening twice changes nothing";

    ASSERT_EQ(AUGraphClose(graph), noErr);
    EXPECT_EQ(graph.unit(node), nullptr);
    EXPECT_EQ(AudioUnitReset(unit, 0, 0), badComponentInstance);
    EXPECT_EQ(alive("ComponentInstance"), 0u);
    ASSERT_EQ(AUGraphClose(graph), noErr);
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    EXPECT_NE(graph.unit(node), unit) << "another unit";

    ASSERT_EQ(AUGraphRemoveNode(graph, node), noErr);
    EXPECT_EQ(alive("ComponentInstance"), 0u);
}

TEST(Nodes, ManyOfThem)
{
    const Graph graph;
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    for (AUNode node = 1; node <= 100; ++node) {
        ASSERT_EQ(graph.add('auou', 'genr'), node);
        ASSERT_EQ(AUGraphRemoveNode(graph, node), noErr);
    }
    EXPECT_EQ(alive("ComponentInstance"), 0u);
    EXPECT_EQ(alive("AUGraph"), 1u);
}

TEST(Nodes, GoWithTheirGraph)
{
    for (const bool isOpen : {false, true}) {
        Graph graph;
        graph.add('auou', 'ahal');
        if (isOpen) {
            ASSERT_EQ(AUGraphOpen(graph), noErr);
        }
        EXPECT_EQ(alive("AUGraph"), 1u);
        EXPECT_EQ(alive("ComponentInstance"), isOpen ? 1u : 0u);
        ASSERT_EQ(graph.dispose(), noErr);
        EXPECT_EQ(alive("AUGraph"), 0u);
        EXPECT_EQ(alive("ComponentInstance"), 0u);
    }
}

TEST(Nodes, WhoseUnitsTheirCallerClosedAreNoHarm)
{
    Graph graph;
    const AUNode node = graph.add('auou', 'genr');
    ASSERT_EQ(graph.setCallback(node, ignored, nullptr), noErr);
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    ASSERT_EQ(AudioComponentInstanceDispose(graph.unit(node)), noErr);
    EXPECT_EQ(AUGraphInitialize(graph), badComponentInstance);
    EXPECT_FALSE(graph.isRunning());
    EXPECT_EQ(graph.dispose(), noErr);
}

} // namespace
