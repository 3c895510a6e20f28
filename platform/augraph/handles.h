// The handles of graphs. All functions: [any].
#pragma once

#include "platform/augraph/graph.h"
#include "platform/support/handle_table.h"

namespace kvxplatform::augraph {

using Graphs = HandleTable<Graph, 3>;

/// Make a graph. Throws std::bad_alloc.
/// Returns  its handle; null if the table is full.
AUGraph add();

/// Returns  the graph of a handle, kept alive by the result; empty for a handle that names no graph.
Graphs::Use use(AUGraph handle);

/// Start the disposal of a graph. The handle stays valid until endDispose.
/// Returns  the graph for the first caller; empty for later ones.
Graphs::Use beginDispose(AUGraph handle);
void endDispose(Graphs::Use graph);

} // namespace kvxplatform::augraph
