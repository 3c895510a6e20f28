// Gets and sets properties of any object, by means of the property tables.
#pragma once

#include "platform/hal/device_list.h"

namespace kvxplatform::hal {

struct Object {
    AudioObjectID id;
    DeviceRef device; ///< device of the object; null for the system object
    bool isStream;
    bool isInput; ///< for a stream: whether it is an input stream
};

/// The kinds of objects that one property interface accepts, and the status that it returns for other
/// objects.
struct Interface {
    enum class Kind { any, device, stream } kind;
    OSStatus badObject;
};
constexpr Interface byAddress = {Interface::Kind::any, kAudioHardwareBadObjectError};
constexpr Interface ofDevices = {Interface::Kind::device, kAudioHardwareBadDeviceError};
constexpr Interface ofStreams = {Interface::Kind::stream, kAudioHardwareBadStreamError};

/// The property that a program requests, and the interface through which the request came.
struct Target {
    const Interface& interface;
    AudioObjectID object;
    AudioObjectPropertyAddress address;
    UInt32 qualifierSize = 0;
    const void* qualifier = nullptr;
};

// All functions: [any].

/// Look up an object by its ID. Returns false if there is no such object.
bool findObject(AudioObjectID id, Object& object);

// getValue, getInfo and setValue return the platform's status and throw no exception.

OSStatus getValue(const Target& target, UInt32* ioSize, void* data);
/// Get the size of a value and whether the property is settable. `outSize` and `outWritable` may be null.
OSStatus getInfo(const Target& target, UInt32* outSize, Boolean* outWritable);
/// Set a value. Inside a cycle, a device's new settings are applied soon after the call.
OSStatus setValue(const Target& target, UInt32 size, const void* data);

} // namespace kvxplatform::hal
