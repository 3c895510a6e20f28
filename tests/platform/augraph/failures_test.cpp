// Every unit that cannot be made or initialised: a clear status, nothing lost, and a graph that works when
// there is no more trouble.
#include "tests/platform/augraph/marks_chain.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

TEST(Failures, AnyUnitThatCannotBeMadeLeavesTheGraphClosed)
{
    for (int which = 1; which <= chainLength; ++which) {
        SCOPED_TRACE(which);
        const Chain chain;
        failOpening(which);
        EXPECT_EQ(AUGraphOpen(chain.graph), failure);
        EXPECT_FALSE(chain.graph.isOpen());
        EXPECT_EQ(alive("ComponentInstance"), 0u);
        EXPECT_EQ(chain.graph.unit(chain.output), nullptr);
        chain.expectItWorks();
    }
}

TEST(Failures, AUnitThatCannotBeMadeIsNotAdded)
{
    const Graph graph;
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    failOpening(1);
    OSStatus status = noErr;
    EXPECT_EQ(graph.add('aufx', 'mark', &status), 0);
    EXPECT_EQ(status, failure);
    UInt32 count = 7;
    ASSERT_EQ(AUGraphGetNodeCount(graph, &count), noErr);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(graph.add('aufx', 'mark'), 1) << "no number was used up";
}

TEST(Failures, AnyUnitThatCannotBeInitialisedLeavesAllUninitialised)
{
    for (int which = 1; which <= chainLength; ++which) {
        SCOPED_TRACE(which);
        const Chain chain;
        ASSERT_EQ(AUGraphOpen(chain.graph), noErr);
        failInitialization(which);
        EXPECT_EQ(AUGraphInitialize(chain.graph), failure);
        EXPECT_FALSE(chain.graph.isInitialized());
        EXPECT_TRUE(chain.graph.isOpen());
        for (const AUNode node : chain.nodes) EXPECT_FALSE(isInitialized(chain.graph.unit(node)));
        EXPECT_EQ(AUGraphStart(chain.graph), kAudioUnitErr_Uninitialized);
        chain.expectItWorks();
    }
}

} // namespace
