// Passing the stored sources of a graph to its units.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Connect and initialise the units, node by node from the sources to the head, so that each format reaches
/// the next unit before that unit is initialised. The caller holds the graph's lock.
/// Errors  InvalidConnection if nodes are connected in a cycle; the status of the first unit that fails.
/// [any but audio]
OSStatus wire(Graph& graph);

} // namespace kvxplatform::augraph
