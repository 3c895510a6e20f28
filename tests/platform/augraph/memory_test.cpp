// Every piece of memory that is not to be had: a clear status, nothing lost, and a graph that works when
// there is enough.
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/calls.h"
#include "tests/platform/augraph/marks_chain.h"
#include "tests/support/failing_memory.h"

#include <gtest/gtest.h>

namespace {

__thread int allocationsLeft = 0; // the one that fails; 0: none does

} // namespace

bool support::mayAllocate() { return !allocationsLeft || --allocationsLeft; }

namespace {

using namespace test;

/// `make` with the first, second, third… piece of memory missing, until there is enough for it.
template <class Make>
void sweep(const char* what, Make make)
{
    SCOPED_TRACE(what);
    OSStatus status = memFullErr;
    int which = 0;
    while (status) {
        SCOPED_TRACE(++which);
        ASSERT_LT(which, 1000);
        allocationsLeft = which;
        status = make();
        const bool wasShort = allocationsLeft == 0;
        allocationsLeft = 0;
        ASSERT_EQ(status, wasShort ? memFullErr : noErr);
    }
}

TEST(Memory, ThatIsMissingIsSaidAndNothingIsLost)
{
    {
        AUGraph made = nullptr;
        sweep("NewAUGraph", [&] { return NewAUGraph(&made); });
        ASSERT_EQ(DisposeAUGraph(made), noErr);

        const Chain chain;
        const AUGraph graph = chain.graph;
        const AudioComponentDescription mark = {'aufx', 'mark', 'appl', 0, 0};
        AUNode node = 0;
        sweep("AddNode", [&] { return AUGraphAddNode(graph, &mark, &node); });
        EXPECT_EQ(node, chainLength + 2) << "the refused ones used up no number";
        sweep("Open", [&] { return AUGraphOpen(graph); });
        for (int i = 0; i < 9; ++i) // once where the list of nodes has to grow
            sweep("AddNode, open", [&] { return AUGraphAddNode(graph, &mark, &node); });
        EXPECT_EQ(alive("ComponentInstance"), chainLength + 11u);
        const AURenderCallbackStruct callback = {ignored, nullptr};
        sweep("SetNodeInputCallback", [&] { return AUGraphSetNodeInputCallback(graph, node, 0, &callback); });
        sweep("Initialize", [&] { return AUGraphInitialize(graph); });
        chain.expectItWorks();
        ASSERT_EQ(AUGraphAddNode(graph, &mark, &node), noErr);
        sweep("ConnectNodeInput",
              [&] { return AUGraphConnectNodeInput(graph, node, 0, chain.nodes.front(), 0); });
        ASSERT_EQ(AUGraphRemoveNode(graph, node - 1), noErr);
        sweep("Update", [&] { return AUGraphUpdate(graph, nullptr); });
        sweep("RemoveNode", [&] { return AUGraphRemoveNode(graph, node); });
        sweep("Update, disconnecting", [&] { return AUGraphUpdate(graph, nullptr); });
        sweep("Stop", [&] { return AUGraphStop(graph); });
        sweep("Uninitialize", [&] { return AUGraphUninitialize(graph); });
        sweep("Close", [&] { return AUGraphClose(graph); });
    }
    EXPECT_EQ(alive("AUGraph"), 0u);
    EXPECT_EQ(alive("ComponentInstance"), 0u);
}

} // namespace
