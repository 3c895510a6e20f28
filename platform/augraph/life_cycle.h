// The transitions between the states of a graph: closed, open, initialised.
// The caller holds the graph's lock. All functions: [any but audio].
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Create the unit of every node. After a failure no unit is left.
OSStatus open(Graph& graph);

/// Uninitialise the graph and close its units. The graph keeps its nodes and sources.
void close(Graph& graph);

/// Pass the sources to the units and initialise the units. After a failure no unit is initialised.
/// Errors  Uninitialized if the graph is closed; those of wire().
OSStatus initialize(Graph& graph);

/// Stop the output unit, then uninitialise all units after their render calls have ended.
/// Errors  badComponentInstance if the graph is closed.
OSStatus uninitialize(Graph& graph);

/// Close the graph and refuse all later calls.
void dispose(Graph& graph);

} // namespace kvxplatform::augraph
