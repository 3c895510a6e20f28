#include "platform/augraph/nodes.h"

#include "platform/audiounit/family.h"
#include "platform/audiounit/render.h"
#include "platform/augraph/head.h"
#include "platform/augraph/unit_calls.h"

#include <algorithm>

namespace kvxplatform::augraph {
namespace {

/// The first audio unit that a description fits.
bool findUnit(const AudioComponentDescription& looking, Node& out)
{
    const ComponentDescription wanted = {looking.componentType, looking.componentSubType,
                                         looking.componentManufacturer, looking.componentFlags,
                                         looking.componentFlagsMask};
    Component handle = nullptr;
    while ((handle = components::findNext(handle, wanted))) {
        components::Component component{};
        if (!components::find(handle, component) || component.family != &audiounit::family) continue;
        const ComponentDescription& found = component.description;
        out = {0,
               handle,
               {found.componentType, found.componentSubType, found.componentManufacturer,
                found.componentFlags, found.componentFlagsMask},
               nullptr};
        return true;
    }
    return false;
}

template <class Forget>
void eraseInputs(Inputs& inputs, Forget isForgotten)
{
    for (auto each = inputs.begin(); each != inputs.end();)
        each = isForgotten(*each) ? inputs.erase(each) : std::next(each);
}

} // namespace

Node* findNode(Graph& graph, AUNode number)
{
    for (Node& node : graph.nodes)
        if (node.number == number) return &node;
    return nullptr;
}

OSStatus addNode(Graph& graph, const AudioComponentDescription& description, AUNode& out)
{
    Node node{};
    if (!findUnit(description, node)) return kAUGraphErr_InvalidAudioUnit;
    if (isOutput(node) && std::any_of(graph.nodes.begin(), graph.nodes.end(), isOutput))
        return kAUGraphErr_OutputNodeErr;
    graph.nodes.reserve(graph.nodes.size() + 1); // so that nothing fails once there is a unit
    if (graph.isOpen)
        if (const OSStatus status = openUnit(graph, node)) return status;
    node.number = ++graph.lastNumber;
    graph.nodes.push_back(node);
    out = node.number;
    return noErr;
}

OSStatus removeNode(Graph& graph, AUNode number)
{
    Node* const node = findNode(graph, number);
    if (!node) return kAUGraphErr_NodeNotFound;
    if (isOutput(*node) && isHeadRunning(graph)) return kAUGraphErr_OutputNodeErr;
    graph.leaving.push_back(*node);
    if (isOutput(*node)) graph.head = nullptr;
    graph.nodes.erase(graph.nodes.begin() + (node - graph.nodes.data()));
    eraseInputs(graph.wanted,
                [&](const auto& each) { return each.first.node == number || each.second.node == number; });
    if (!graph.isInitialized) closeLeaving(graph);
    return noErr;
}

OSStatus openUnit(Graph& graph, Node& node)
{
    if (const OSStatus status = components::open(node.component, node.unit)) return status;
    if (!isOutput(node)) return noErr;
    graph.head = node.unit;
    return noErr;
}

void closeUnit(Graph& graph, Node& node)
{
    if (graph.head == node.unit) graph.head = nullptr;
    if (node.unit) components::close(node.unit); // one that its caller has closed is gone already
    node.unit = nullptr;
}

void closeLeaving(Graph& graph)
{
    for (Node& node : graph.leaving) {
        closeUnit(graph, node);
        eraseInputs(graph.made, [&](const auto& each) { return each.first.node == node.number; });
    }
    graph.leaving.clear();
}

} // namespace kvxplatform::augraph
