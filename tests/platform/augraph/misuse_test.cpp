// Graphs that are none, nodes that are none, and places for answers that are missing.
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/calls.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

std::vector<GraphCall> allCalls()
{
    std::vector<GraphCall> calls = callsAbout(1);
    calls.push_back({"Start", true, AUGraphStart});
    calls.push_back({"Stop", true, AUGraphStop});
    calls.push_back({"IsRunning", false, [](AUGraph g) {
                         Boolean is;
                         return AUGraphIsRunning(g, &is);
                     }});
    calls.push_back({"Dispose", true, DisposeAUGraph});
    return calls;
}

TEST(Misuse, AGraphThatIsNoneIsParamErr)
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

TEST(Misuse, AHandleNeverComesBack)
{
    std::vector<AUGraph> old;
    for (int turn = 0; turn < 300; ++turn) {
        Graph graph;
        for (const AUGraph each : old) ASSERT_NE(each, static_cast<AUGraph>(graph));
        old.push_back(graph);
    }
    const Graph graph;
    Boolean is = 0;
    for (const AUGraph each : old) EXPECT_EQ(AUGraphIsOpen(each, &is), paramErr);
}

TEST(Misuse, AMissingPlaceIsParamErr)
{
    const Graph graph;
    const AUNode node = graph.add('auou', 'genr');
    const AudioComponentDescription hal = {'auou', 'ahal', 'appl', 0, 0};
    AUNode out = 77;
    // clang-format off
    const struct { const char* name; OSStatus status; } facts[] = {
        {"NewAUGraph",                   NewAUGraph(nullptr)},
        {"AddNode, no place",            AUGraphAddNode(graph, &hal, nullptr)},
        {"AddNode, no description",      AUGraphAddNode(graph, nullptr, &out)},
        {"GetNodeCount",                 AUGraphGetNodeCount(graph, nullptr)},
        {"GetIndNode",                   AUGraphGetIndNode(graph, 0, nullptr)},
        {"GetIndNode, past the end too", AUGraphGetIndNode(graph, 1, nullptr)},
        {"SetNodeInputCallback",         AUGraphSetNodeInputCallback(graph, node, 0, nullptr)},
        {"IsOpen",                       AUGraphIsOpen(graph, nullptr)},
        {"IsInitialized",                AUGraphIsInitialized(graph, nullptr)},
        {"IsRunning",                    AUGraphIsRunning(graph, nullptr)},
        {"AddRenderNotify",              AUGraphAddRenderNotify(graph, nullptr, &out)},
        {"RemoveRenderNotify",           AUGraphRemoveRenderNotify(graph, nullptr, &out)},
    };
    // clang-format on
    for (const auto& fact : facts) EXPECT_EQ(fact.status, paramErr) << fact.name;
    EXPECT_EQ(out, 77) << "a refused call writes nothing";
    EXPECT_EQ(AUGraphNodeInfo(graph, node, nullptr, nullptr), noErr) << "either may be NULL, and both";
    EXPECT_EQ(AUGraphUpdate(graph, nullptr), noErr);
}

TEST(Misuse, ANodeThatIsNoneIsNodeNotFound)
{
    const Graph graph, other;
    const AUNode node = graph.add('auou', 'genr');
    other.add('auou', 'ahal');
    ASSERT_EQ(graph.add('auou', 'ahal'), 0);
    const AURenderCallbackStruct callback = {ignored, nullptr};
    for (const AUNode none : std::initializer_list<AUNode>{0, -1, node + 1, 0x7FFFFFFF}) {
        SCOPED_TRACE(none);
        AudioUnit unit = nullptr;
        EXPECT_EQ(AUGraphRemoveNode(graph, none), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphNodeInfo(graph, none, nullptr, &unit), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphConnectNodeInput(graph, none, 0, node, 0), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphConnectNodeInput(graph, node, 0, none, 0), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphConnectNodeInput(graph, none, 0, none, 0), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphSetNodeInputCallback(graph, none, 0, &callback), kAUGraphErr_NodeNotFound);
        EXPECT_EQ(AUGraphDisconnectNodeInput(graph, none, 0), kAUGraphErr_NodeNotFound);
    }
    AUNode out = 0;
    EXPECT_EQ(AUGraphGetIndNode(graph, 0, &out), noErr);
    EXPECT_EQ(AUGraphGetIndNode(graph, 1, &out), kAUGraphErr_NodeNotFound);
    EXPECT_EQ(AUGraphGetIndNode(graph, 0xFFFFFFFF, &out), kAUGraphErr_NodeNotFound);
    EXPECT_EQ(out, node);
}

} // namespace
