// The spy's platform functions for devices.
#include "tests/auplayer/graph_spy_calls.h"

using namespace graph_spy;

namespace {

const Device* findDevice(AudioDeviceID id)
{
    const auto& devices = platform().devices;
    const auto found =
        std::find_if(devices.begin(), devices.end(), [&](const Device& device) { return device.id == id; });
    return found == devices.end() ? nullptr : &*found;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* size)
{
    const Call call = note(__func__, Number{object}, address, Number{qualifierSize}, qualifier);
    if (call.refusal) return call.refusal;
    if (!platform().deviceLists.count(address->mSelector)) return kAudioHardwareUnknownPropertyError;
    *size =
        call.scripted.size.value_or(static_cast<UInt32>(platform().devices.size() * sizeof(AudioDeviceID)));
    return noErr;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* size, void* data)
{
    Call call = note(__func__, Number{object}, address, Number{qualifierSize}, qualifier, InOut{size});
    if (address->mSelector == 'name') {
        const Device* const device = findDevice(object);
        if (device && device->nameStatus) call.refusal = device->nameStatus;
        if (device) call.scripted.value = device->name;
    } else if (call.scripted.value.empty()) {
        for (const Device& device : platform().devices) call.scripted.value += bytesOf(device.id);
    }
    return giveScripted(call, size, data);
}

OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID property, UInt32* size, void* data)
{
    return giveScripted(note(__func__, Code{property}, InOut{size}), size, data);
}

OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                    AudioDevicePropertyID property, UInt32* size, Boolean* writable)
{
    const OSStatus refusal = note(__func__, Number{device}, Number{channel}, Number{isInput}, Code{property},
                                  InOut{size}, static_cast<const void*>(writable))
                                 .refusal;
    const Device* const found = findDevice(device);
    return refusal || (found && found->hasOutput) ? refusal : OSStatus{kAudioHardwareUnknownPropertyError};
}

} // extern "C"
#pragma GCC visibility pop
