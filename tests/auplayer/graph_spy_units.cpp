// The spy's platform functions for graphs, units and devices.
#include "tests/auplayer/graph_spy_text.h"

namespace graph_spy {

namespace {

constexpr AUNode firstNode = 70;
Platform thePlatform;
std::map<AUNode, std::string> nodes;
AURenderCallbackStruct lastCallback;

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

const Device* findDevice(AudioDeviceID id)
{
    const auto& devices = platform().devices;
    const auto found =
        std::find_if(devices.begin(), devices.end(), [&](const Device& device) { return device.id == id; });
    return found == devices.end() ? nullptr : &*found;
}

/// Write the scripted property value, or garbage if the call is refused.
OSStatus giveScripted(const spy::Call& call, UInt32* size, void* target)
{
    if (call.status) {
        if (size && call.scripted.leavesGarbage) spy::writeGarbage(target, *size);
        return call.status;
    }
    const std::string& value = call.scripted.value;
    if (target && size) std::memcpy(target, value.data(), std::min<std::size_t>(value.size(), *size));
    if (size && call.scripted.size) *size = *call.scripted.size;
    return noErr;
}

} // namespace

Platform& platform() { return thePlatform; }
AURenderCallbackStruct callback() { return lastCallback; }

void reset()
{
    spy::reset();
    thePlatform = {};
    nodes.clear();
    lastCallback = {};
}

Line& operator<<(Line& line, Node node)
{
    const auto found = nodes.find(node.number);
    return found == nodes.end() ? line << "node " << node.number : line << found->second << " node";
}

} // namespace graph_spy

using namespace graph_spy;

#pragma GCC visibility push(default)
extern "C" {

// ---- graphs ----

OSStatus NewAUGraph(AUGraph* graph)
{
    const OSStatus status = spy::record(__func__).status;
    return spy::giveNew(status, "graph", graph);
}

OSStatus DisposeAUGraph(AUGraph graph)
{
    const spy::Release releasing(__func__, graph);
    for (const char* const unit : {"output", "varispeed", "timePitch", "equalizer", "mixer", "converter"})
        spy::releaseAll(unit);
    return spy::record(__func__, graph).status;
}

OSStatus AUGraphAddNode(AUGraph graph, const AudioComponentDescription* description, AUNode* node)
{
    const OSStatus status = spy::record(__func__, graph, description).status;
    const spy::Guard guard;
    const AUNode added = firstNode + static_cast<AUNode>(nodes.size());
    if (!status) nodes[added] = unitName(description->componentSubType);
    return spy::give(status, node, added);
}

OSStatus AUGraphConnectNodeInput(AUGraph graph, AUNode source, UInt32 output, AUNode destination,
                                 UInt32 input)
{
    return spy::record(__func__, graph, Node{source}, output, Node{destination}, input).status;
}

OSStatus AUGraphOpen(AUGraph graph) { return spy::record(__func__, graph).status; }

OSStatus AUGraphNodeInfo(AUGraph graph, AUNode node, AudioComponentDescription* description, AudioUnit* unit)
{
    const OSStatus status = spy::record(__func__, graph, Node{node}, description).status;
    return spy::give(status, unit, status ? nullptr : static_cast<AudioUnit>(spy::makeNamed(nodes[node])));
}

OSStatus AUGraphSetNodeInputCallback(AUGraph graph, AUNode node, UInt32 input,
                                     const AURenderCallbackStruct* given)
{
    lastCallback = *given;
    return spy::record(__func__, graph, Node{node}, input, given).status;
}

OSStatus AUGraphInitialize(AUGraph graph) { return spy::record(__func__, graph).status; }

OSStatus AUGraphStart(AUGraph graph)
{
    const OSStatus status = spy::record(__func__, graph).status;
    if (!status) platform().isRunning = true;
    return status;
}

OSStatus AUGraphStop(AUGraph graph)
{
    const OSStatus status = spy::record(__func__, graph).status;
    if (!status) platform().isRunning = false;
    return status;
}

OSStatus AUGraphIsRunning(AUGraph graph, Boolean* isRunning)
{
    const OSStatus status = spy::record(__func__, graph).status;
    return spy::give(status, isRunning, Boolean{platform().isRunning});
}

// ---- audio units ----

OSStatus AudioUnitGetPropertyInfo(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                                  AudioUnitElement element, UInt32* size, Boolean* writable)
{
    const spy::Call call =
        spy::record(__func__, unit, Code{property}, Scope{scope}, element, InOut{size}, writable);
    return giveScripted(call, size, nullptr);
}

OSStatus AudioUnitGetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, void* data, UInt32* size)
{
    const spy::Call call = spy::record(__func__, unit, Code{property}, Scope{scope}, element, InOut{size});
    return giveScripted(call, size, data);
}

OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, const void* data, UInt32 size)
{
    spy::keepValue(data, size);
    return spy::record(__func__, unit, Code{property}, Scope{scope}, element, Value{data, size}, Bytes{size})
        .status;
}

OSStatus AudioUnitGetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue* number)
{
    const spy::Call call = spy::record(__func__, unit, Code{parameter}, Scope{scope}, element);
    // A refused call without a scripted number leaves its output unchanged.
    if (call.status && call.scripted.parameter == 0) return call.status;
    if (number) *number = call.scripted.parameter;
    return call.status;
}

OSStatus AudioUnitSetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue number, UInt32 offset)
{
    return spy::record(__func__, unit, Code{parameter}, Scope{scope}, element, number, offset).status;
}

OSStatus AudioUnitReset(AudioUnit unit, AudioUnitScope scope, AudioUnitElement element)
{
    return spy::record(__func__, unit, Scope{scope}, element).status;
}

// ---- devices ----

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* size)
{
    const spy::Call call = spy::record(__func__, object, address, qualifierSize, qualifier);
    if (call.status) return call.status;
    if (!platform().deviceLists.count(address->mSelector)) return kAudioHardwareUnknownPropertyError;
    *size =
        call.scripted.size.value_or(static_cast<UInt32>(platform().devices.size() * sizeof(AudioDeviceID)));
    return noErr;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* size, void* data)
{
    spy::Call call = spy::record(__func__, object, address, qualifierSize, qualifier, InOut{size});
    if (address->mSelector == 'name') {
        const Device* const device = findDevice(object);
        if (device && device->nameStatus) call.status = device->nameStatus;
        if (device) call.scripted.value = device->name;
    } else if (call.scripted.value.empty()) {
        for (const Device& device : platform().devices) call.scripted.value += bytesOf(device.id);
    }
    return giveScripted(call, size, data);
}

OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID property, UInt32* size, void* data)
{
    return giveScripted(spy::record(__func__, Code{property}, InOut{size}), size, data);
}

OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                    AudioDevicePropertyID property, UInt32* size, Boolean* writable)
{
    const OSStatus status =
        spy::record(__func__, device, channel, isInput, Code{property}, InOut{size}, writable).status;
    const Device* const found = findDevice(device);
    return status || (found && found->hasOutput) ? status : OSStatus{kAudioHardwareUnknownPropertyError};
}

} // extern "C"
#pragma GCC visibility pop
