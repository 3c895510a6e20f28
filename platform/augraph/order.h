// The order in which sound passes a graph's nodes.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// The nodes that hear something or are heard, each behind all that it hears, as callers have connected them.
/// False when some hear themselves, by whatever detour. With the lock.
bool fromSources(Graph& graph, std::vector<Node*>& out);

} // namespace kvxplatform::augraph
