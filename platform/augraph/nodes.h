// The nodes of a graph and their units. The caller holds the graph's lock.
// All functions: [any but audio]; addNode(): [any].
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Add a node. If the graph is open, also create the node's unit.
/// Errors  InvalidAudioUnit if no unit fits the description; OutputNodeErr for a second output unit;
///         the status of a unit that cannot be created.
OSStatus addNode(Graph& graph, const AudioComponentDescription& description, AUNode& out);

/// Create a node's unit. An output unit becomes the graph's head.
OSStatus openUnit(Graph& graph, Node& node);

/// Wait until the render call of a node's unit has ended, then close the unit.
void closeUnit(Graph& graph, Node& node);

} // namespace kvxplatform::augraph
