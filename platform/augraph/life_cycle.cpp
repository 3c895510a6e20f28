#include "platform/augraph/life_cycle.h"

#include "platform/audiounit/life_cycle.h"
#include "platform/augraph/head.h"
#include "platform/augraph/nodes.h"
#include "platform/augraph/unit_calls.h"
#include "platform/augraph/wiring.h"

namespace kvxplatform::augraph {
namespace {

void uninitializeUnits(Graph& graph)
{
    if (const AudioUnit head = graph.head) { // first, so that nobody is pulled any more
        stopHead(graph);
        onUnit(head, audiounit::uninitialize);
    }
    for (const Node& node : graph.nodes) onUnit(node.unit, audiounit::uninitialize);
    closeLeaving(graph);
}

void closeUnits(Graph& graph)
{
    for (Node& node : graph.nodes) closeUnit(graph, node);
    graph.made.clear();
}

/// Undoes, unless all went well.
template <class Undo>
struct Unless {
    Graph& graph;
    Undo undo;
    bool isWell = false;
    ~Unless()
    {
        if (!isWell) undo(graph);
    }
};
template <class Undo>
Unless(Graph&, Undo) -> Unless<Undo>;

} // namespace

OSStatus open(Graph& graph)
{
    if (graph.isOpen) return noErr;
    Unless all{graph, closeUnits};
    for (Node& node : graph.nodes)
        if (const OSStatus status = openUnit(graph, node)) return status;
    graph.isOpen = all.isWell = true;
    return noErr;
}

void close(Graph& graph)
{
    if (graph.isOpen) uninitialize(graph);
    closeUnits(graph);
    graph.isOpen = false;
}

OSStatus initialize(Graph& graph)
{
    if (graph.isInitialized) return noErr;
    if (!graph.isOpen) return kAudioUnitErr_Uninitialized;
    Unless all{graph, uninitializeUnits};
    if (const OSStatus status = wire(graph, Extent::all)) return status;
    graph.isInitialized = all.isWell = true;
    return noErr;
}

OSStatus uninitialize(Graph& graph)
{
    if (!graph.isOpen) return badComponentInstance;
    if (graph.isInitialized) uninitializeUnits(graph);
    graph.isInitialized = false;
    return noErr;
}

OSStatus update(Graph& graph, bool& isDone)
{
    isDone = false;
    if (!graph.isInitialized) return noErr;
    const OSStatus status = wire(graph, Extent::changed);
    isDone = !status;
    return status;
}

void dispose(Graph& graph)
{
    close(graph);
    graph.isDisposed = true;
}

} // namespace kvxplatform::augraph
