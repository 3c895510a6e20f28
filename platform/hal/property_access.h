// Gets and sets properties of any object by the property tables.
#pragma once

#include "platform/hal/device_list.h"

namespace kvxplatform::hal {

struct Object {
    AudioObjectID id;
    DeviceRef device; ///< null: the system object
    bool isStream;
    bool isInput; ///< of a stream
};

/// The objects that a property interface accepts, and its status for others.
struct Interface {
    enum class Kind { any, device, stream } kind;
    OSStatus badObject;
};
constexpr Interface byAddress = {Interface::Kind::any, kAudioHardwareBadObjectError};
constexpr Interface ofDevices = {Interface::Kind::device, kAudioHardwareBadDeviceError};
constexpr Interface ofStreams = {Interface::Kind::stream, kAudioHardwareBadStreamError};

/// What a program requests.
struct Target {
    const Interface& interface;
    AudioObjectID object;
    AudioObjectPropertyAddress address;
    UInt32 qualifierSize = 0;
    const void* qualifier = nullptr;
};

// All functions: [any].

/// False if there is no such object.
bool findObject(AudioObjectID id, Object& object);

// The next three return the platform's status and throw nothing.

OSStatus getValue(const Target& target, UInt32* ioSize, void* data);
/// Either result may be null.
OSStatus getInfo(const Target& target, UInt32* outSize, Boolean* outWritable);
/// Inside a cycle, new settings of a device are applied soon after.
OSStatus setValue(const Target& target, UInt32 size, const void* data);

} // namespace kvxplatform::hal
