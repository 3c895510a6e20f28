// A graph's life: open, initialised, and back. All with the graph's lock, outside every slice.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Make the units. One that cannot be made undoes those before it.
OSStatus open(Graph& graph);

/// Uninitialise, and close the units. Nodes and connections stay.
void close(Graph& graph);

/// Wire the graph. Uninitialized: it is not open. A unit that refuses leaves all of them uninitialised.
OSStatus initialize(Graph& graph);

/// Stop, and wait until no unit is inside a slice. badComponentInstance: there are no units.
OSStatus uninitialize(Graph& graph);

/// Wire what has changed since. `isDone`: nothing waits. Before the graph is initialised nothing is done.
OSStatus update(Graph& graph, bool& isDone);

/// Close, for good.
void dispose(Graph& graph);

} // namespace kvxplatform::augraph
