// Recording the sources of inputs. wiring.h passes them to the units.
// All functions: [any], with the graph's lock.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

/// Record a connection from an output of `source` to `input`.
/// Errors  NodeNotFound; InvalidConnection if the input has a source.
OSStatus connect(Graph& graph, AUNode source, UInt32 output, const Input& input);

/// Record a callback in place of the former one. A callback without a procedure removes the former one.
/// Errors  NodeNotFound; InvalidConnection if the input has a connection.
OSStatus setCallback(Graph& graph, const Input& input, const AURenderCallbackStruct& callback);

} // namespace kvxplatform::augraph
