// A graph, closed at first, with a chain of adding units that ends in an output unit.
#pragma once

#include "tests/platform/augraph/adding_units.h"
#include "tests/platform/augraph/graph.h"

#include <gtest/gtest.h>

namespace test {

constexpr int chainLength = 4;

struct AddingChain {
    Graph graph;
    AUNode output = graph.add('auou', 'genr');
    std::vector<AUNode> nodes;
    AddingChain()
    {
        for (int i = 0; i < chainLength; ++i) {
            nodes.push_back(graph.add('aufx', 'add '));
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
