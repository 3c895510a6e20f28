// The order of nodes along the signal path.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// List the nodes that have a source or are one, each after all of its sources.
/// Returns  false if nodes are connected in a cycle.
/// The caller holds the graph's lock.
/// [any]
bool orderFromSources(Graph& graph, std::vector<Node*>& out);

} // namespace kvxplatform::augraph
