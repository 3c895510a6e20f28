// The spy's platform functions for graphs and units.
#include "tests/auplayer/graph_spy_calls.h"

using namespace graph_spy;

namespace {

constexpr AUNode firstNode = 70;

std::string unitName(OSType subType)
{
    switch (subType) {
    case 'vari':
        return "varispeed";
    case 'nutp':
    case 'tmpt':
        return "timePitch";
    case 'greq':
        return "equalizer";
    case 'mcmx':
        return "mixer";
    case 'conv':
        return "converter";
    default:
        return "output";
    }
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

// ---- graphs ----

OSStatus NewAUGraph(AUGraph* graph)
{
    const OSStatus refusal = note(__func__).refusal;
    return give(refusal, graph, refusal ? nullptr : static_cast<AUGraph>(make("graph")));
}

OSStatus DisposeAUGraph(AUGraph graph)
{
    const Release releasing(__func__, graph);
    release({"output", "varispeed", "timePitch", "equalizer", "mixer", "converter"});
    return note(__func__, static_cast<const void*>(graph)).refusal;
}

OSStatus AUGraphAddNode(AUGraph graph, const AudioComponentDescription* description, AUNode* node)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph), description).refusal;
    const Guard guard;
    const AUNode added = firstNode + static_cast<AUNode>(state.nodes.size());
    if (!refusal) state.nodes[added] = unitName(description->componentSubType);
    return give(refusal, node, added);
}

OSStatus AUGraphConnectNodeInput(AUGraph graph, AUNode source, UInt32 output, AUNode destination,
                                 UInt32 input)
{
    return note(__func__, static_cast<const void*>(graph), Node{source}, Number{output}, Node{destination},
                Number{input})
        .refusal;
}

OSStatus AUGraphOpen(AUGraph graph) { return note(__func__, static_cast<const void*>(graph)).refusal; }

OSStatus AUGraphNodeInfo(AUGraph graph, AUNode node, AudioComponentDescription* description, AudioUnit* unit)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph), Node{node},
                                  static_cast<const AudioComponentDescription*>(description))
                                 .refusal;
    return give(refusal, unit, refusal ? nullptr : static_cast<AudioUnit>(makeNamed(state.nodes[node])));
}

OSStatus AUGraphSetNodeInputCallback(AUGraph graph, AUNode node, UInt32 input,
                                     const AURenderCallbackStruct* given)
{
    state.callback = *given;
    return note(__func__, static_cast<const void*>(graph), Node{node}, Number{input}, given).refusal;
}

OSStatus AUGraphInitialize(AUGraph graph) { return note(__func__, static_cast<const void*>(graph)).refusal; }

OSStatus AUGraphStart(AUGraph graph)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph)).refusal;
    if (!refusal) platform().isRunning = true;
    return refusal;
}

OSStatus AUGraphStop(AUGraph graph)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph)).refusal;
    if (!refusal) platform().isRunning = false;
    return refusal;
}

OSStatus AUGraphIsRunning(AUGraph graph, Boolean* isRunning)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph)).refusal;
    return give(refusal, isRunning, Boolean{platform().isRunning});
}

// ---- audio units ----

OSStatus AudioUnitGetPropertyInfo(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                                  AudioUnitElement element, UInt32* size, Boolean* writable)
{
    const Call call = note(__func__, static_cast<const void*>(unit), Code{property}, Scope{scope},
                           Number{element}, InOut{size}, static_cast<const void*>(writable));
    return giveScripted(call, size, nullptr);
}

OSStatus AudioUnitGetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, void* data, UInt32* size)
{
    const Call call = note(__func__, static_cast<const void*>(unit), Code{property}, Scope{scope},
                           Number{element}, InOut{size});
    return giveScripted(call, size, data);
}

OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, const void* data, UInt32 size)
{
    keepValue(data, size);
    return note(__func__, static_cast<const void*>(unit), Code{property}, Scope{scope}, Number{element},
                Value{data, size}, Bytes{size})
        .refusal;
}

OSStatus AudioUnitGetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue* number)
{
    const Call call =
        note(__func__, static_cast<const void*>(unit), Code{parameter}, Scope{scope}, Number{element});
    // A refused call without a scripted number leaves its output unchanged.
    if (call.refusal && call.scripted.number == 0) return call.refusal;
    if (number) *number = call.scripted.number;
    return call.refusal;
}

OSStatus AudioUnitSetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue number, UInt32 offset)
{
    return note(__func__, static_cast<const void*>(unit), Code{parameter}, Scope{scope}, Number{element},
                number, Number{offset})
        .refusal;
}

OSStatus AudioUnitReset(AudioUnit unit, AudioUnitScope scope, AudioUnitElement element)
{
    return note(__func__, static_cast<const void*>(unit), Scope{scope}, Number{element}).refusal;
}

} // extern "C"
#pragma GCC visibility pop
