// Storing the sources of inputs in a graph. wire() later passes the sources to the units.
// The caller holds the graph's lock. All functions: [any].
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Store a connection from an output of the node `source` to `input`.
/// Errors  NodeNotFound; InvalidConnection if the input already has a source.
OSStatus connect(Graph& graph, AUNode source, UInt32 output, const Input& input);

/// Store a render callback for an input in place of the input's former callback. A callback without a
/// procedure only removes the former callback.
/// Errors  NodeNotFound; InvalidConnection if the input is connected to a node.
OSStatus setCallback(Graph& graph, const Input& input, const AURenderCallbackStruct& callback);

} // namespace kvxplatform::augraph
