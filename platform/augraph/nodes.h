// A graph's nodes: adding and removing them, making and closing their units. All with the graph's lock.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// InvalidAudioUnit: no unit fits the description; OutputNodeErr: a second output unit. In an open graph the
/// unit is made at once, and what refuses it is the status.
OSStatus addNode(Graph& graph, const AudioComponentDescription& description, AUNode& out);

/// The node goes at once, with all that it is connected to; its unit goes too, or, while the graph is
/// initialised, with the next update. OutputNodeErr: it is the output of a running graph.
OSStatus removeNode(Graph& graph, AUNode number);

/// Make a node's unit. An output unit becomes the head and gets the graph's notifications.
OSStatus openUnit(Graph& graph, Node& node);

/// Waits for the unit's slice to end.
void closeUnit(Graph& graph, Node& node);

/// The units of removed nodes, and what was made of their inputs.
void closeLeaving(Graph& graph);

} // namespace kvxplatform::augraph
