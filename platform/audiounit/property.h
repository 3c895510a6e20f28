// Properties: a table for each kind of unit, before the table that all units share.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

enum class Access { readOnly, readWrite, writeOnly };

/// When, and which locks its setter is called with: `beforeInitialize` both; `always` settings;
/// `alwaysUnlocked` none, for a setter that takes its own or speaks to other units or to the device.
enum class Settable { beforeInitialize, always, alwaysUnlocked };

constexpr UInt32 inGlobal = 1u << kAudioUnitScope_Global;
constexpr UInt32 inInput = 1u << kAudioUnitScope_Input;
constexpr UInt32 inOutput = 1u << kAudioUnitScope_Output;
constexpr UInt32 inAll = inGlobal | inInput | inOutput;

constexpr AudioUnitElement anyElement = 0xFFFF'FFFF;
constexpr AudioUnitElement anyNumber = 0xFFFF'FFFE; // the element names something else

/// Where a property is asked for.
struct ElementAddress {
    AudioUnitScope scope;
    AudioUnitElement element;
};

struct Property {
    AudioUnitPropertyID id;
    UInt32 scopes;            // in…
    AudioUnitElement element; // one, anyElement that the scope has, or anyNumber
    UInt32 size;              // of the value; 0: `sizeOf` tells
    Access access;
    Settable settable;

    /// The value, into room for its size; `size` is that and may be made smaller. With settings.
    OSStatus (*get)(Unit&, ElementAddress, void* data, UInt32& size);

    /// A new value. `data` null and `size` 0 take the value away, where the property is one that can be taken
    /// away.
    OSStatus (*set)(Unit&, ElementAddress, const void* data, UInt32 size);

    UInt32 (*sizeOf)(Unit&, ElementAddress); // the largest the value can be now. With settings
    bool isRemovable = false;
};

extern const Rows<Property> commonProperties;

OSStatus getPropertyInfo(Unit& unit, AudioUnitPropertyID id, ElementAddress address, UInt32* size,
                         Boolean* isWritable);
OSStatus getProperty(Unit& unit, AudioUnitPropertyID id, ElementAddress address, void* data, UInt32* size);
OSStatus setProperty(Unit& unit, AudioUnitPropertyID id, ElementAddress address, const void* data,
                     UInt32 size);

/// A value of the right type where a property's setter or getter has bare memory, however aligned.
template <class T>
T valueAt(const void* data)
{
    T value;
    __builtin_memcpy(&value, data, sizeof value);
    return value;
}
template <class T>
OSStatus give(void* data, const T& value)
{
    __builtin_memcpy(data, &value, sizeof value);
    return noErr;
}

/// Give an input or output a format, if its kind takes it there. With settings.
OSStatus setFormat(Unit& unit, ElementAddress address, const AudioStreamBasicDescription& format);

/// Whether the format is any linear PCM: a kind's takesFormat.
bool takesLinearPCM(const Unit& unit, AudioUnitScope scope, AudioUnitElement element,
                    const AudioStreamBasicDescription& format);

/// Getters and setters for kinds with rows of their own: of common properties for some elements, and of
/// bypass.
OSStatus getStreamFormat(Unit& unit, ElementAddress address, void* data, UInt32& size);
OSStatus setStreamFormat(Unit& unit, ElementAddress address, const void* data, UInt32 size);
OSStatus getSampleRate(Unit& unit, ElementAddress address, void* data, UInt32& size);
OSStatus setSampleRate(Unit& unit, ElementAddress address, const void* data, UInt32 size);
OSStatus setConnection(Unit& unit, ElementAddress address, const void* data, UInt32 size);
OSStatus getBypass(Unit& unit, ElementAddress address, void* data, UInt32& size);
OSStatus setBypass(Unit& unit, ElementAddress address, const void* data, UInt32 size);
OSStatus setRenderCallback(Unit& unit, ElementAddress address, const void* data, UInt32 size);

} // namespace kvxplatform::audiounit
