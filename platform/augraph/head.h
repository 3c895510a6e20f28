// A graph's output unit: running, and who is told of its slices.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Uninitialized, when the graph is not; OutputNodeErr without an output node; else the unit's. With the
/// lock.
OSStatus start(Graph& graph);

/// Thread [any but audio], with the lock; or inside a slice of the head, without. Where there is no head, a
/// stop has nothing to do.
OSStatus startHead(Graph& graph);
OSStatus stopHead(Graph& graph);

/// What the unit says; false when there is none. Thread [any], without the lock.
bool isHeadRunning(const Graph& graph);

/// With the lock. Once added, a notification goes with every output unit that the graph has.
OSStatus addNotify(Graph& graph, const Notify& notify);

/// InvalidPropertyValue for one that is not there, as the units have it. With the lock.
OSStatus removeNotify(Graph& graph, const Notify& notify);

} // namespace kvxplatform::augraph
