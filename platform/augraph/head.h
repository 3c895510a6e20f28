// The output unit of a graph: start, stop, state.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Errors  Uninitialized if the graph is not initialised; OutputNodeErr without an output node; the unit's.
/// The caller holds the graph's lock.
/// [any but audio]
OSStatus start(Graph& graph);

/// Start or stop the output unit. Without one a stop does nothing. The head's own render call needs no lock.
/// [any but audio], with the graph's lock, or [audio & rendering]
OSStatus startHead(Graph& graph);
OSStatus stopHead(Graph& graph);

/// Whether the output unit reports that it is running; false without one.
/// The caller does not hold the lock.
/// [any]
bool isHeadRunning(const Graph& graph);

/// Whether the calling thread is in a render call of the output unit.
/// The caller does not hold the lock.
/// [any]
bool isInsideHead(const Graph& graph);

} // namespace kvxplatform::augraph
