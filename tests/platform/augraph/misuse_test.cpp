// Tests of graph calls with invalid graphs, unknown nodes and missing arguments.
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/graph_calls.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

std::vector<GraphCall> allCalls()
{
    std::vector<GraphCall> calls = graphCalls(1);
    calls.push_back({"Start", true, AUGraphStart});
    calls.push_back({"Stop", true, AUGraphStop});
    calls.push_back({"IsRunning", false, [](AUGraph g) {
                         Boolean is;
                         return AUGraphIsRunning(g, &is);
                     }});
    calls.push_back({"Dispose", true, DisposeAUGraph});
    return calls;
}

TEST(GraphMisuse, AnInvalidGraphIsParamErr)
{
    Graph stale, other;
    const AUGraph gone = stale;
    ASSERT_EQ(stale.dispose(), noErr);
    const Unit unit('genr');
    const struct {
        AUGraph graph;
        const char* why;
    } facts[] = {
        {nullptr, "NULL"},
        {gone, "disposed"},
        {reinterpret_cast<AUGraph>(static_cast<AudioUnit>(unit)), "a unit"},
        {reinterpret_cast<AUGraph>(~std::uintptr_t{0}), "made up"},
        {reinterpret_cast<AUGraph>(&other), "an address"},
    };
    for (const auto& fact : facts)
        for (const GraphCall& call : allCalls())
            EXPECT_EQ(call.make(fact.graph), paramErr) << call.name << ", " << fact.why;
}

TEST(GraphMisuse, AHandleIsNeverUsedAgain)
{
    std::vector<AUGraph> old;
    for (int i = 0; i < 300; ++i) {
        Graph graph;
        for (const AUGraph each : old) ASSERT_NE(each, static_cast<AUGraph>(graph));
        old.push_back(graph);
    }
    const Graph graph;
    Boolean is = 0;
    for (const AUGraph each : old) EXPECT_EQ(AUGraphIsOpen(each, &is), paramErr);
}

TEST(GraphMisuse, AMissingArgumentIsParamErr)
{
    const Graph graph;
    const AUNode node = graph.add('auou', 'genr');
    const AudioComponentDescription hal = {'auou', 'ahal', 'appl', 0, 0};
    AUNode out = 77;
    // clang-format off
    const struct { const char* name; OSStatus status; } facts[] = {
        {"NewAUGraph",                   NewAUGraph(nullptr)},
        {"AddNode, no out-pointer",            AUGraphAddNode(graph, &hal, nullptr)},
        {"AddNode, no description",      AUGraphAddNode(graph, nullptr, &out)},
        {"GetNodeCount",                 AUGraphGetNodeCount(graph, nullptr)},
        {"GetIndNode",                   AUGraphGetIndNode(graph, 0, nullptr)},
        {"GetIndNode, past the end too", AUGraphGetIndNode(graph, 1, nullptr)},
        {"SetNodeInputCallback",         AUGraphSetNodeInputCallback(graph, node, 0, nullptr)},
        {"IsOpen",                       AUGraphIsOpen(graph, nullptr)},
        {"IsInitialized",                AUGraphIsInitialized(graph, nullptr)},
        {"IsRunning",                    AUGraphIsRunning(graph, nullptr)},
    };
    // clang-format on
    for (const auto& fact : facts) EXPECT_EQ(fact.status, paramErr) << fact.name;
    EXPECT_EQ(out, 77) << "a refused call writes nothing";
    EXPECT_EQ(AUGraphNodeInfo(graph, node, nullptr, nullptr), noErr) << "both out-pointers may be NULL";
}

TEST(GraphMisuse, AnUnknownNodeIsNodeNotFound)
{
    const Graph graph, other;
    const AUNode node = graph.add('auou', 'genr');
    other.add('auou', 'ahal');
    ASSERT_EQ(graph.add('auou', 'ahal'), 0);
    const AURenderCallbackStruct callback = {emptySource, nullptr};
    for (const AUNode unknown : std::initializer_list<AUNode>{0, -1, node + 1, 0x7FFFFFFF}) {
        SCOPED_TRACE(unknown);
        AudioUnit unit = nullptr;
        EXPECT_EQ(AUGraphNodeInfo(graph, unknown, nullptr, &unit), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphConnectNodeInput(graph, unknown, 0, node, 0), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphConnectNodeInput(graph, node, 0, unknown, 0), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphConnectNodeInput(graph, unknown, 0, unknown, 0), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphSetNodeInputCallback(graph, unknown, 0, &callback), kAUGraphErr_NodeNotFound);
    }
    AUNode out = 0;
    EXPECT_EQ(AUGraphGetIndNode(graph, 0, &out), noErr);
    EXPECT_EQ(AUGraphGetIndNode(graph, 1, &out), kAUGraphErr_NodeNotFound);
    EXPECT_EQ(AUGraphGetIndNode(graph, 0xFFFFFFFF, &out), kAUGraphErr_NodeNotFound);
    EXPECT_EQ(out, node);
}

} // namespace
