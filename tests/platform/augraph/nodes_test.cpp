// Tests of the nodes of a graph: their numbers, order and units.
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/graph_calls.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

UInt32 countOf(const Graph& graph)
{
    UInt32 count = 77;
    EXPECT_EQ(AUGraphGetNodeCount(graph, &count), noErr);
    return count;
}

TEST(Nodes, AreNumberedFromOne)
{
    const Graph graph;
    EXPECT_EQ(countOf(graph), 0u);
    for (AUNode number = 1; number <= 5; ++number) {
        EXPECT_EQ(graph.add('aufc', 'conv'), number);
        EXPECT_EQ(countOf(graph), static_cast<UInt32>(number));
    }
    const Graph other;
    EXPECT_EQ(other.add('auou', 'genr'), 1) << "each graph has its own numbers";
}

TEST(Nodes, UseTheFirstUnitThatFitsTheDescription)
{
    // clang-format off
    const struct { AudioComponentDescription description; OSStatus status; OSType found; const char* why; } facts[] = {
        {{'auou', 'genr', 'appl', 0, 0},          noErr, 'genr', "the full description"},
        {{'auou', 'genr', 0, 0, 0},               noErr, 'genr', "any manufacturer"},
        {{'auou', 0, 0, 0, 0},                    noErr, 'ahal', "the first output unit"},
        {{'auou', 'genr', 'appl', 0xFFFF, 0},     noErr, 'genr', "flags without a mask are not compared"},
        {{'auou', 'none', 'appl', 0, 0},          kAUGraphErr_InvalidAudioUnit, 0, "no such subtype"},
        {{'nope', 'genr', 'appl', 0, 0},          kAUGraphErr_InvalidAudioUnit, 0, "no such type"},
        {{'auou', 'genr', 'else', 0, 0},          kAUGraphErr_InvalidAudioUnit, 0, "no such manufacturer"},
        {{'auou', 'genr', 'appl', 1, 1},          kAUGraphErr_InvalidAudioUnit, 0, "flags that the unit does not have"},
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
            ASSERT_EQ(AUGraphAddNode(graph, &fact.description, &node), fact.status);
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
            EXPECT_EQ(unit != nullptr, isOpen) << "a node of an open graph has a unit at once";
        }
}

TEST(Nodes, OneOfThemIsAnOutputUnit)
{
    for (const OSType first : {'genr', 'ahal', 'def ', 'sys '})
        for (const OSType second : {'genr', 'ahal', 'def ', 'sys '}) {
            const Graph graph;
            ASSERT_EQ(graph.add('auou', first), 1);
            OSStatus status = noErr;
            EXPECT_EQ(graph.add('auou', second, &status), 0);
            EXPECT_EQ(status, kAUGraphErr_OutputNodeErr);
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
}

TEST(Nodes, MayBeMany)
{
    const Graph graph;
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    for (AUNode node = 1; node <= 100; ++node) ASSERT_EQ(graph.add('aufc', 'conv'), node);
    EXPECT_EQ(alive("ComponentInstance"), 100u);
    ASSERT_EQ(AUGraphClose(graph), noErr);
    EXPECT_EQ(alive("ComponentInstance"), 0u);
    EXPECT_EQ(alive("AUGraph"), 1u);
}

TEST(Nodes, AreDisposedWithTheirGraph)
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

TEST(Nodes, MayHaveAUnitThatTheProgramHasClosed)
{
    Graph graph;
    const AUNode node = graph.add('auou', 'genr');
    ASSERT_EQ(graph.setCallback(node, emptySource, nullptr), noErr);
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    ASSERT_EQ(CloseComponent(graph.unit(node)), noErr);
    EXPECT_EQ(AUGraphInitialize(graph), badComponentInstance);
    EXPECT_FALSE(graph.isRunning());
    EXPECT_EQ(graph.dispose(), noErr);
}

} // namespace
