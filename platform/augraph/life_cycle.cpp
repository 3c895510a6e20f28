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
    if (const AudioUnit head = graph.head) { // the head comes first because it pulls all other units
        stopHead(graph);
        onUnit(head, audiounit::uninitialize);
    }
    for (const Node& node : graph.nodes) onUnit(node.unit, audiounit::uninitialize);
}

void closeUnits(Graph& graph)
{
    for (Node& node : graph.nodes) closeUnit(graph, node);
}

/// A scope guard that calls `undo` at the end of the scope, unless `hasSucceeded` has been set.
template <class Undo>
struct Rollback {
    Graph& graph;
    Undo undo;
    bool hasSucceeded = false;
    ~Rollback()
    {
        if (!hasSucceeded) undo(graph);
    }
};
template <class Undo>
Rollback(Graph&, Undo) -> Rollback<Undo>;

} // namespace

OSStatus open(Graph& graph)
{
    if (graph.isOpen) return noErr;
    Rollback step{graph, closeUnits};
    for (Node& node : graph.nodes)
        if (const OSStatus status = openUnit(graph, node)) return status;
    graph.isOpen = step.hasSucceeded = true;
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
    Rollback step{graph, uninitializeUnits};
    if (const OSStatus status = wire(graph)) return status;
    graph.isInitialized = step.hasSucceeded = true;
    return noErr;
}

OSStatus uninitialize(Graph& graph)
{
    if (!graph.isOpen) return badComponentInstance;
    if (graph.isInitialized) uninitializeUnits(graph);
    graph.isInitialized = false;
    return noErr;
}

void dispose(Graph& graph)
{
    close(graph);
    graph.isDisposed = true;
}

} // namespace kvxplatform::augraph
