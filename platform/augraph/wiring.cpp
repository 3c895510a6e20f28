#include "platform/augraph/wiring.h"

#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/property_access.h"
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

OSStatus setSource(Graph& graph, const Input& input, const Source& source)
{
    const AudioUnit unit = findNode(graph, input.node)->unit;
    if (!source.node)
        return setInput(unit, kAudioUnitProperty_SetRenderCallback, input.bus, &source.callback,
                        sizeof source.callback);
    const AudioUnitConnection connection = {findNode(graph, source.node)->unit, source.output, input.bus};
    return setInput(unit, kAudioUnitProperty_MakeConnection, input.bus, &connection, sizeof connection);
}

/// Remove the source from every input whose stored source is empty. orderFromSources() may omit such an
/// input's node.
void removeEmptySources(Graph& graph)
{
    for (auto each = graph.sources.begin(); each != graph.sources.end();) {
        if (!isEmpty(each->second)) {
            ++each;
            continue;
        }
        setSource(graph, each->first, each->second); // an error only means that the input no longer exists
        each = graph.sources.erase(each);
    }
}

OSStatus setSources(Graph& graph, const Node& node)
{
    for (auto each = graph.sources.lower_bound({node.number, 0});
         each != graph.sources.end() && each->first.node == node.number; ++each)
        if (const OSStatus status = setSource(graph, each->first, each->second)) return status;
    return noErr;
}

} // namespace

OSStatus wire(Graph& graph)
{
    removeEmptySources(graph);
    std::vector<Node*> order;
    if (!orderFromSources(graph, order)) return kAUGraphErr_InvalidConnection;
    for (const Node* node : order) {
        OSStatus status = setSources(graph, *node);
        if (!status) status = onUnit(node->unit, audiounit::initialize);
        if (status) return status;
    }
    return noErr;
}

} // namespace kvxplatform::augraph
