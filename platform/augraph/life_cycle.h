// The states of a graph: closed, open, initialised.
// All functions: [any but audio], with the graph's lock.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Make the units. After a failure none is left.
OSStatus open(Graph& graph);

/// Uninitialise the graph and close the units. Nodes and sources stay.
void close(Graph& graph);

/// Pass the sources to the units and initialise them. After a failure no unit is initialised.
/// Errors  Uninitialized if the graph is closed; wire()'s.
OSStatus initialize(Graph& graph);

/// Stop, then wait until no unit is rendering.
/// Errors  badComponentInstance if the graph is closed.
OSStatus uninitialize(Graph& graph);

/// Close the graph for good.
void dispose(Graph& graph);

} // namespace kvxplatform::augraph
