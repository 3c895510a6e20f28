// Properties. Each unit kind has a property table, which is searched before the table that all units share.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

enum class Access { readOnly, readWrite, writeOnly };

/// When a property can be set, and which locks the caller of its setter holds.
enum class Settable {
    beforeInitialize, ///< only before the unit is initialised; the caller holds both locks
    always,           ///< at any time; the caller holds the `settings` lock
    /// At any time; the caller holds no lock. The setter takes the locks itself, or calls other units or the
    /// device.
    alwaysUnlocked,
};

constexpr UInt32 inGlobal = 1u << kAudioUnitScope_Global;
constexpr UInt32 inInput = 1u << kAudioUnitScope_Input;
constexpr UInt32 inOutput = 1u << kAudioUnitScope_Output;
constexpr UInt32 inAll = inGlobal | inInput | inOutput;

constexpr AudioUnitElement anyElement = 0xFFFF'FFFF;
// Any element number is valid because the number selects something else, such as a parameter.
constexpr AudioUnitElement anyNumber = 0xFFFF'FFFE;

struct ElementAddress {
    AudioUnitScope scope;
    AudioUnitElement element;
};

struct Property {
    AudioUnitPropertyID id;
    UInt32 scopes; ///< scopes of the property: inGlobal, inInput and inOutput, combined
    /// The valid elements: a single number; anyElement for each one that the scope has; or anyNumber.
    AudioUnitElement element;
    UInt32 size; ///< value size in bytes; 0 if sizeOf returns the size
    Access access;
    Settable settable;

    /// Write the property's value to `data`. `size` is the capacity and may be reduced. The caller holds the
    /// `settings` lock.
    /// [any]
    OSStatus (*get)(Unit&, ElementAddress, void* data, UInt32& size);

    /// Set the property's value. Null `data` with `size` 0 removes the value of a removable property.
    /// [any]
    OSStatus (*set)(Unit&, ElementAddress, const void* data, UInt32 size);

    /// Returns  the largest size that the value can have at present. The caller holds the `settings` lock.
    UInt32 (*sizeOf)(Unit&, ElementAddress);
    bool isRemovable = false;
};

/// Read a value from memory of any alignment.
template <class T>
T valueAt(const void* data)
{
    T value;
    __builtin_memcpy(&value, data, sizeof value);
    return value;
}

/// Write a value to memory of any alignment. Returns noErr, so that a getter can return the result.
template <class T>
OSStatus give(void* data, const T& value)
{
    __builtin_memcpy(data, &value, sizeof value);
    return noErr;
}

} // namespace kvxplatform::audiounit
