// The order of nodes along the signal path.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// List the nodes that have a source or serve as a source, each node after all of its sources. The caller
/// holds the graph's lock.
/// Returns  false if nodes are connected in a cycle.
/// [any]
bool orderFromSources(Graph& graph, std::vector<Node*>& out);

} // namespace kvxplatform::augraph
