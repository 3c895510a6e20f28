// Tests of units that cannot be created or initialised. The graph call returns the unit's status and can be
// repeated.
#include "tests/platform/augraph/adding_chain.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

TEST(GraphFailures, AUnitThatCannotBeMadeLeavesTheGraphClosed)
{
    for (int which = 1; which <= chainLength; ++which) {
        SCOPED_TRACE(which);
        const AddingChain chain;
        failOpening(which);
        EXPECT_EQ(AUGraphOpen(chain.graph), failure);
        EXPECT_FALSE(chain.graph.isOpen());
        EXPECT_EQ(alive("ComponentInstance"), 0u);
        EXPECT_EQ(chain.graph.unit(chain.output), nullptr);
        chain.expectItWorks();
    }
}

TEST(GraphFailures, ANodeWhoseUnitCannotBeMadeIsNotAdded)
{
    const Graph graph;
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    failOpening(1);
    OSStatus status = noErr;
    EXPECT_EQ(graph.add('aufx', 'add ', &status), 0);
    EXPECT_EQ(status, failure);
    UInt32 count = 7;
    ASSERT_EQ(AUGraphGetNodeCount(graph, &count), noErr);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(graph.add('aufx', 'add '), 1) << "the failed call took no number";
}

TEST(GraphFailures, AUnitThatCannotBeInitialisedLeavesAllUninitialised)
{
    for (int which = 1; which <= chainLength; ++which) {
        SCOPED_TRACE(which);
        const AddingChain chain;
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
