#include "platform/augraph/connections.h"

namespace kvxplatform::augraph {

OSStatus connect(Graph& graph, AUNode source, UInt32 output, const Input& input)
{
    if (!findNode(graph, source) || !findNode(graph, input.node)) return kAUGraphErr_NodeNotFound;
    Source& entry = graph.sources[input];
    if (!isEmpty(entry)) return kAUGraphErr_InvalidConnection;
    entry = {source, output, {}};
    return noErr;
}

OSStatus setCallback(Graph& graph, const Input& input, const AURenderCallbackStruct& callback)
{
    if (!findNode(graph, input.node)) return kAUGraphErr_NodeNotFound;
    const auto found = graph.sources.find(input);
    const bool hasEntry = found != graph.sources.end();
    if (hasEntry && found->second.node) return kAUGraphErr_InvalidConnection;
    if (hasEntry || callback.inputProc) graph.sources[input] = {0, 0, callback};
    return noErr;
}

} // namespace kvxplatform::augraph
