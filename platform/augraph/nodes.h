// The nodes of a graph and their units.
// All functions: [any but audio], with the graph's lock; addNode also [audio].
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Add a node; in an open graph also make its unit.
/// Errors  InvalidAudioUnit if no unit fits the description; OutputNodeErr for a second output unit;
///         the status of a unit that cannot be made.
OSStatus addNode(Graph& graph, const AudioComponentDescription& description, AUNode& out);

/// Make a node's unit. An output unit becomes the head.
OSStatus openUnit(Graph& graph, Node& node);

/// Wait for the unit's render call to end, then close the unit.
void closeUnit(Graph& graph, Node& node);

} // namespace kvxplatform::augraph
