#include "platform/augraph/nodes.h"

#include "platform/audiounit/family.h"
#include "platform/components/instances.h"
#include "platform/components/registry.h"

#include <algorithm>

namespace kvxplatform::augraph {
namespace {

/// Find the first audio unit that fits a description and store the unit's component and full description in
/// `out`. Returns false if no audio unit fits.
bool findUnit(const AudioComponentDescription& description, Node& out)
{
    const ComponentDescription pattern = {description.componentType, description.componentSubType,
                                          description.componentManufacturer, description.componentFlags,
                                          description.componentFlagsMask};
    Component handle = nullptr;
    while ((handle = components::findNext(handle, pattern))) {
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

} // namespace

OSStatus addNode(Graph& graph, const AudioComponentDescription& description, AUNode& out)
{
    Node node{};
    if (!findUnit(description, node)) return kAUGraphErr_InvalidAudioUnit;
    if (isOutput(node) && std::any_of(graph.nodes.begin(), graph.nodes.end(), isOutput))
        return kAUGraphErr_OutputNodeErr;
    graph.nodes.reserve(graph.nodes.size() + 1); // reserved here, so push_back cannot fail with an open unit
    if (graph.isOpen)
        if (const OSStatus status = openUnit(graph, node)) return status;
    node.number = ++graph.lastNumber;
    graph.nodes.push_back(node);
    out = node.number;
    return noErr;
}

OSStatus openUnit(Graph& graph, Node& node)
{
    if (const OSStatus status = components::open(node.component, node.unit)) return status;
    if (isOutput(node)) graph.head = node.unit;
    return noErr;
}

void closeUnit(Graph& graph, Node& node)
{
    if (graph.head == node.unit) graph.head = nullptr;
    if (node.unit) components::close(node.unit); // an error means that the program has closed the unit
    node.unit = nullptr;
}

} // namespace kvxplatform::augraph
