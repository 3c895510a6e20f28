// A chain of marking units in a graph that is not open yet.
#pragma once

#include "tests/platform/augraph/graph.h"
#include "tests/platform/augraph/units.h"

#include <gtest/gtest.h>

namespace test {

constexpr int chainLength = 4;

struct Chain {
    Graph graph;
    AUNode output = graph.add('auou', 'genr');
    std::vector<AUNode> nodes;
    Chain()
    {
        for (int i = 0; i < chainLength; ++i) {
            nodes.push_back(graph.add('aufx', 'mark'));
            if (i) EXPECT_EQ(graph.connect(nodes[static_cast<std::size_t>(i) - 1], nodes.back()), noErr);
        }
        EXPECT_EQ(graph.connect(nodes.back(), output), noErr);
    }
    void expectItWorks() const
    {
        EXPECT_EQ(AUGraphOpen(graph), noErr);
        EXPECT_EQ(AUGraphInitialize(graph), noErr);
        EXPECT_EQ(AUGraphStart(graph), noErr);
        EXPECT_TRUE(graph.isRunning());
        for (const AUNode node : nodes) EXPECT_TRUE(isInitialized(graph.unit(node)));
    }
};

} // namespace test
