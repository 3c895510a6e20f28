// The public functions of both property interfaces, and those that add and remove property listeners.
#include "platform/hal/listeners.h"
#include "platform/hal/property_access.h"
#include "platform/support/border.h"

#include <cstdio>

using namespace kvxplatform::hal;
using kvxplatform::withinBorder;

namespace {

AudioObjectPropertyAddress addressOfDevice(UInt32 channel, Boolean isInput, AudioDevicePropertyID selector)
{
    const AudioObjectPropertyScope scope =
        isInput ? AudioObjectPropertyScope{kAudioDevicePropertyScopeInput} : kAudioDevicePropertyScopeOutput;
    return {selector, scope, channel};
}

AudioObjectPropertyAddress addressOf(AudioObjectPropertySelector selector, UInt32 element = 0)
{
    return {selector, kAudioObjectPropertyScopeGlobal, element};
}

} // namespace

// ---- property interface by address, for all objects ----

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* outSize)
{
    if (!address || !outSize) return kAudioHardwareIllegalOperationError;
    return getInfo({byAddress, id, *address, qualifierSize, qualifier}, outSize, nullptr);
}

OSStatus AudioObjectGetPropertyData(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* ioSize, void* data)
{
    if (!address) return kAudioHardwareIllegalOperationError;
    return getValue({byAddress, id, *address, qualifierSize, qualifier}, ioSize, data);
}

OSStatus AudioObjectSetPropertyData(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32 size,
                                    const void* data)
{
    if (!address) return kAudioHardwareIllegalOperationError;
    return setValue({byAddress, id, *address, qualifierSize, qualifier}, size, data);
}

Boolean AudioObjectHasProperty(AudioObjectID id, const AudioObjectPropertyAddress* address)
{
    return address && getInfo({byAddress, id, *address}, nullptr, nullptr) == noErr;
}

OSStatus AudioObjectIsPropertySettable(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                       Boolean* outSettable)
{
    if (!address || !outSettable) return kAudioHardwareIllegalOperationError;
    return getInfo({byAddress, id, *address}, nullptr, outSettable);
}

OSStatus AudioObjectAddPropertyListener(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                        AudioObjectPropertyListenerProc proc, void* client)
{
    return withinBorder(kAudioHardwareUnspecifiedError, [&] {
        Object object;
        if (!findObject(id, object)) return OSStatus{kAudioHardwareBadObjectError};
        if (!address || !proc) return OSStatus{kAudioHardwareIllegalOperationError};
        addListener(id, *address, proc, client);
        return OSStatus{noErr};
    });
}

// The function also removes a listener of an object that has ended.
OSStatus AudioObjectRemovePropertyListener(AudioObjectID id, const AudioObjectPropertyAddress* address,
                                           AudioObjectPropertyListenerProc proc, void* client)
{
    return withinBorder(kAudioHardwareUnspecifiedError, [&] {
        return address && removeListener(id, *address, proc, client)
                   ? OSStatus{noErr}
                   : OSStatus{kAudioHardwareIllegalOperationError};
    });
}

void AudioObjectShow(AudioObjectID id)
{
    withinBorder(false, [=] {
        Object object;
        const bool isFound = findObject(id, object);
        std::printf("AudioObjectID: %u (%s)\n", static_cast<unsigned>(id),
                    !isFound          ? "none"
                    : !object.device  ? "system"
                    : object.isStream ? "stream"
                                      : object.device->name.c_str());
        return true;
    });
}

// ---- property interfaces of the system, of devices and of streams ----

OSStatus AudioHardwareGetPropertyInfo(AudioHardwarePropertyID selector, UInt32* outSize, Boolean* outWritable)
{
    return getInfo({byAddress, kAudioObjectSystemObject, addressOf(selector)}, outSize, outWritable);
}

OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID selector, UInt32* ioSize, void* data)
{
    return getValue({byAddress, kAudioObjectSystemObject, addressOf(selector)}, ioSize, data);
}

OSStatus AudioHardwareSetProperty(AudioHardwarePropertyID selector, UInt32 size, const void* data)
{
    return setValue({byAddress, kAudioObjectSystemObject, addressOf(selector)}, size, data);
}

OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                    AudioDevicePropertyID selector, UInt32* outSize, Boolean* outWritable)
{
    return getInfo({ofDevices, device, addressOfDevice(channel, isInput, selector)}, outSize, outWritable);
}

OSStatus AudioDeviceGetProperty(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                AudioDevicePropertyID selector, UInt32* ioSize, void* data)
{
    return getValue({ofDevices, device, addressOfDevice(channel, isInput, selector)}, ioSize, data);
}

OSStatus AudioDeviceSetProperty(AudioDeviceID device, const AudioTimeStamp*, UInt32 channel, Boolean isInput,
                                AudioDevicePropertyID selector, UInt32 size, const void* data)
{
    return setValue({ofDevices, device, addressOfDevice(channel, isInput, selector)}, size, data);
}

OSStatus AudioStreamGetPropertyInfo(AudioStreamID stream, UInt32 channel, AudioDevicePropertyID selector,
                                    UInt32* outSize, Boolean* outWritable)
{
    return getInfo({ofStreams, stream, addressOf(selector, channel)}, outSize, outWritable);
}

OSStatus AudioStreamGetProperty(AudioStreamID stream, UInt32 channel, AudioDevicePropertyID selector,
                                UInt32* ioSize, void* data)
{
    return getValue({ofStreams, stream, addressOf(selector, channel)}, ioSize, data);
}

OSStatus AudioStreamSetProperty(AudioStreamID stream, const AudioTimeStamp*, UInt32 channel,
                                AudioDevicePropertyID selector, UInt32 size, const void* data)
{
    return setValue({ofStreams, stream, addressOf(selector, channel)}, size, data);
}
