// What callers connect. It is noted here, and made on the units by wiring.h. All with the graph's lock.
//
// Errors   NodeNotFound: no such node; InvalidConnection: the input hears something already, or, to be
//          disconnected, nothing.
#pragma once

#include "platform/augraph/graph.h"

namespace kvxplatform::augraph {

OSStatus connect(Graph& graph, AUNode source, UInt32 output, const Input& input);

/// In the place of a former callback. One without a procedure takes the callback away.
OSStatus setCallback(Graph& graph, const Input& input, const AURenderCallbackStruct& callback);

OSStatus disconnect(Graph& graph, const Input& input);

/// Nobody hears anything.
void disconnectAll(Graph& graph);

} // namespace kvxplatform::augraph
