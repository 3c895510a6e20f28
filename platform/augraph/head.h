// Starting, stopping and querying the output unit of a graph, which is called the graph's head.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Start the output unit of an initialised graph. The caller holds the graph's lock.
/// Errors  Uninitialized if the graph is not initialised; OutputNodeErr without an output node; the status of
///         the output unit.
/// [any but audio]
OSStatus start(Graph& graph);

/// Start or stop the output unit. If the graph has no output unit, a stop does nothing. The caller holds the
/// graph's lock, unless the caller is inside the output unit's own render call.
/// [any but audio], [audio & rendering]
OSStatus startHead(Graph& graph);
OSStatus stopHead(Graph& graph);

/// Whether the output unit reports that it is running; false if the graph has no output unit. Needs no lock.
/// [any]
bool isHeadRunning(const Graph& graph);

/// Whether the calling thread is inside a render call of the output unit. Needs no lock.
/// [any]
bool isInsideHead(const Graph& graph);

} // namespace kvxplatform::augraph
