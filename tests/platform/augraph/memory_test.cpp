// Tests in which each memory allocation of each call fails. The call then returns memFullErr, keeps no
// object, and can be repeated.
#include "tests/platform/augraph/adding_chain.h"
#include "tests/platform/augraph/graph_calls.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

/// Call `make` repeatedly. The first allocation fails in the first call, the second in the second call and so
/// on, until a call succeeds.
template <class Make>
void sweep(const char* what, Make make)
{
    SCOPED_TRACE(what);
    OSStatus status = memFullErr;
    for (int passing = 0; status; ++passing) {
        SCOPED_TRACE(passing);
        ASSERT_LT(passing, 1000);
        allocator_hook::failNew(passing, 1);
        status = make();
        ASSERT_EQ(status, allocator_hook::stopFailing() ? memFullErr : noErr);
    }
}

TEST(GraphMemory, EveryFailedAllocationIsReportedAndLeaksNothing)
{
    {
        AUGraph made = nullptr;
        sweep("NewAUGraph", [&] { return NewAUGraph(&made); });
        ASSERT_EQ(DisposeAUGraph(made), noErr);

        const AddingChain chain;
        const AUGraph graph = chain.graph;
        const AudioComponentDescription adder = {'aufx', 'add ', 'appl', 0, 0};
        AUNode node = 0;
        sweep("AddNode", [&] { return AUGraphAddNode(graph, &adder, &node); });
        EXPECT_EQ(node, chainLength + 2) << "the failed calls took no number";
        sweep("Open", [&] { return AUGraphOpen(graph); });
        for (int i = 0; i < 9; ++i) // adds enough nodes that the node list must grow
            sweep("AddNode, open", [&] { return AUGraphAddNode(graph, &adder, &node); });
        EXPECT_EQ(alive("ComponentInstance"), chainLength + 11u);
        const AURenderCallbackStruct callback = {emptySource, nullptr};
        sweep("SetNodeInputCallback", [&] { return AUGraphSetNodeInputCallback(graph, node, 0, &callback); });
        sweep("Initialize", [&] { return AUGraphInitialize(graph); });
        chain.expectItWorks();
        ASSERT_EQ(AUGraphAddNode(graph, &adder, &node), noErr);
        sweep("ConnectNodeInput",
              [&] { return AUGraphConnectNodeInput(graph, node, 0, chain.nodes.front(), 0); });
        sweep("Stop", [&] { return AUGraphStop(graph); });
        sweep("Uninitialize", [&] { return AUGraphUninitialize(graph); });
        sweep("Initialize, again", [&] { return AUGraphInitialize(graph); });
        sweep("Close", [&] { return AUGraphClose(graph); });
    }
    EXPECT_EQ(alive("AUGraph"), 0u);
    EXPECT_EQ(alive("ComponentInstance"), 0u);
}

} // namespace
