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

/// The kind of objects that a property interface accepts.
enum class Kind { any, device, stream };

/// Each property interface has its own status for an object that is missing or of another kind.
struct Interface {
    Kind kind;
    OSStatus badObject;
};
constexpr Interface byAddress = {Kind::any, kAudioHardwareBadObjectError};
constexpr Interface ofDevices = {Kind::device, kAudioHardwareBadDeviceError};
constexpr Interface ofStreams = {Kind::stream, kAudioHardwareBadStreamError};

// All functions: [any].

/// False if there is no such object.
bool findObject(AudioObjectID id, Object& object);

// Returns of the next three: the platform's status. They throw nothing.

OSStatus getValue(AudioObjectID id, const Interface& interface, const AudioObjectPropertyAddress& address,
                  UInt32 qualifierSize, const void* qualifier, UInt32* ioSize, void* data);
/// Either result may be null.
OSStatus getInfo(AudioObjectID id, const Interface& interface, const AudioObjectPropertyAddress& address,
                 UInt32 qualifierSize, const void* qualifier, UInt32* outSize, Boolean* outWritable);
/// Inside a cycle, new settings of a device are applied soon after.
OSStatus setValue(AudioObjectID id, const Interface& interface, const AudioObjectPropertyAddress& address,
                  UInt32 qualifierSize, const void* qualifier, UInt32 size, const void* data);

} // namespace kvxplatform::hal
