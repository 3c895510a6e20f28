// The table of graphs and the handles that name the graphs. All functions: [any].
#pragma once

#include "platform/augraph/graph.h"
#include "platform/support/handle_table.h"

namespace kvxplatform::augraph {

using Graphs = HandleTable<Graph, 3>;

/// Make a graph. Throws std::bad_alloc.
/// Returns  the graph's handle; null if the table of graphs is full.
AUGraph add();

/// Look up a graph. The result keeps the graph alive.
/// Returns  an empty result for a handle that names no graph.
Graphs::Use use(AUGraph handle);

/// Start the disposal of a graph. The handle stays valid until endDispose().
/// Returns  the graph for the first caller; an empty result for later callers.
Graphs::Use beginDispose(AUGraph handle);
void endDispose(Graphs::Use graph);

} // namespace kvxplatform::augraph
