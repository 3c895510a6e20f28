// Properties: each kind of unit has a table, which is searched before the table that all units share.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

enum class Access { readOnly, readWrite, writeOnly };

/// When a property can be set, and with which locks its setter is called.
enum class Settable {
    beforeInitialize, ///< both locks
    always,           ///< settings
    alwaysUnlocked,   ///< none: the setter takes them, or calls other units or the device
};

constexpr UInt32 inGlobal = 1u << kAudioUnitScope_Global;
constexpr UInt32 inInput = 1u << kAudioUnitScope_Input;
constexpr UInt32 inOutput = 1u << kAudioUnitScope_Output;
constexpr UInt32 inAll = inGlobal | inInput | inOutput;

constexpr AudioUnitElement anyElement = 0xFFFF'FFFF;
constexpr AudioUnitElement anyNumber = 0xFFFF'FFFE; // the element names something else

struct ElementAddress {
    AudioUnitScope scope;
    AudioUnitElement element;
};

struct Property {
    AudioUnitPropertyID id;
    UInt32 scopes;            ///< inGlobal and the like
    AudioUnitElement element; ///< one; anyElement that the scope has; or anyNumber
    UInt32 size;              ///< of the value, in bytes; 0: sizeOf returns it
    Access access;
    Settable settable;

    /// Write the value to `data`. `size` is the capacity and may be reduced. Called with the settings lock.
    /// [any]
    OSStatus (*get)(Unit&, ElementAddress, void* data, UInt32& size);

    /// Set the value. Null `data` with `size` 0 removes the value of a removable property.
    /// [any]
    OSStatus (*set)(Unit&, ElementAddress, const void* data, UInt32 size);

    UInt32 (*sizeOf)(Unit&, ElementAddress); ///< the largest size at present; called with the settings lock
    bool isRemovable = false;
};

/// The value in memory of any alignment, for setters and getters.
template <class T>
T valueAt(const void* data)
{
    T value;
    __builtin_memcpy(&value, data, sizeof value);
    return value;
}

/// Write a value to memory of any alignment. Returns noErr, as a getter does.
template <class T>
OSStatus give(void* data, const T& value)
{
    __builtin_memcpy(data, &value, sizeof value);
    return noErr;
}

} // namespace kvxplatform::audiounit
