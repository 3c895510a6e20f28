#include "platform/augraph/connections.h"

namespace kvxplatform::augraph {

OSStatus connect(Graph& graph, AUNode source, UInt32 output, const Input& input)
{
    if (!findNode(graph, source) || !findNode(graph, input.node)) return kAUGraphErr_NodeNotFound;
    const bool isNew = graph.wanted.insert({input, {source, output, {}}}).second;
    return isNew ? noErr : static_cast<OSStatus>(kAUGraphErr_InvalidConnection);
}

OSStatus setCallback(Graph& graph, const Input& input, const AURenderCallbackStruct& callback)
{
    if (!findNode(graph, input.node)) return kAUGraphErr_NodeNotFound;
    const auto found = graph.wanted.find(input);
    if (found != graph.wanted.end() && found->second.node) return kAUGraphErr_InvalidConnection;
    if (callback.inputProc)
        graph.wanted[input] = {0, 0, callback};
    else
        graph.wanted.erase(input);
    return noErr;
}

OSStatus disconnect(Graph& graph, const Input& input)
{
    if (!findNode(graph, input.node)) return kAUGraphErr_NodeNotFound;
    return graph.wanted.erase(input) ? noErr : static_cast<OSStatus>(kAUGraphErr_InvalidConnection);
}

void disconnectAll(Graph& graph) { graph.wanted.clear(); }

} // namespace kvxplatform::augraph
