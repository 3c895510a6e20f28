#include "platform/augraph/wiring.h"

#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/property_access.h"
#include "platform/augraph/nodes.h"
#include "platform/augraph/order.h"
#include "platform/augraph/unit_calls.h"

namespace kvxplatform::augraph {
namespace {

OSStatus setInput(AudioUnit unit, AudioUnitPropertyID property, UInt32 bus, const void* value, UInt32 size)
{
    return onUnit(unit, [&](audiounit::Unit& u) {
        return audiounit::setProperty(u, property, {kAudioUnitScope_Input, bus}, value, size);
    });
}

/// Inputs that hear something and shall hear nothing. Those of removed nodes go with their units.
void silenceUnwanted(Graph& graph)
{
    for (auto each = graph.made.begin(); each != graph.made.end();) {
        const Input& input = each->first;
        const Node* const node = findNode(graph, input.node);
        if (!node || graph.wanted.count(input)) {
            ++each;
            continue;
        }
        // It only refuses where there is no such unit or input any more, which then hears nothing.
        setInput(node->unit, kAudioUnitProperty_MakeConnection, input.bus, nullptr, 0);
        each = graph.made.erase(each);
    }
}

OSStatus make(Graph& graph, const Node& node, UInt32 bus, const Source& source)
{
    if (!source.node)
        return setInput(node.unit, kAudioUnitProperty_SetRenderCallback, bus, &source.callback,
                        sizeof source.callback);
    const AudioUnitConnection connection = {findNode(graph, source.node)->unit, source.output, bus};
    return setInput(node.unit, kAudioUnitProperty_MakeConnection, bus, &connection, sizeof connection);
}

OSStatus makeInputs(Graph& graph, const Node& node, Extent extent)
{
    for (auto each = graph.wanted.lower_bound({node.number, 0});
         each != graph.wanted.end() && each->first.node == node.number; ++each) {
        const auto& [input, source] = *each;
        Source& now = graph.made[input]; // a callback that is none, when it hears nothing yet
        if (extent == Extent::changed && now == source) continue;
        if (const OSStatus status = make(graph, node, input.bus, source)) return status;
        now = source;
    }
    return noErr;
}

} // namespace

OSStatus wire(Graph& graph, Extent extent)
{
    std::vector<Node*> order;
    if (!fromSources(graph, order)) return kAUGraphErr_InvalidConnection;
    silenceUnwanted(graph);
    for (const Node* node : order) {
        OSStatus status = makeInputs(graph, *node, extent);
        if (!status) status = onUnit(node->unit, audiounit::initialize);
        if (status) return status;
    }
    closeLeaving(graph);
    return noErr;
}

} // namespace kvxplatform::augraph
