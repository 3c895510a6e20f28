// From handles to graphs, and who may wait for one.
#pragma once

#include "platform/augraph/graph.h"
#include "platform/support/handle_table.h"

namespace kvxplatform::augraph {

using Graphs = HandleTable<Graph, 3>;

/// A new graph's handle; null when there are too many. Throws std::bad_alloc.
AUGraph add();

/// The graph behind a handle, whole for as long as this lives. Thread [any], [audio] too.
Graphs::Use use(AUGraph handle);

/// The use of the one caller who disposes a graph; empty for all others. The handle is good until endDispose.
Graphs::Use beginDispose(AUGraph handle);
void endDispose(Graphs::Use graph);

/// Whether the calling thread must not wait: it is inside a slice of some unit, or a device's cycle.
bool isAudioThread();

/// Whether the calling thread is inside a slice of the graph's output unit.
bool isInHeadsSlice(const Graph& graph);

} // namespace kvxplatform::augraph
