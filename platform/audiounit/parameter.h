// Parameters: numbers that may be set while the unit renders.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// A row: `count` parameters of consecutive IDs.
struct Parameter {
    AudioUnitParameterID id; ///< of the first
    UInt32 count;
    AudioUnitScope scope;
    const char* name;
    AudioUnitParameterUnit unit;
    Float32 least, most, initial;
    bool isReadOnly;

    /// Compute the value; null: the stored one. `index` counts from `id`.
    /// [any]
    OSStatus (*get)(Unit&, const Parameter&, AudioUnitElement, UInt32 index, Float32& out);

    /// Set a value in range; null: store it.
    /// [any]
    OSStatus (*set)(Unit&, const Parameter&, AudioUnitElement, UInt32 index, Float32 value);

    /// How many of `count` an element has at present; null: all.
    /// [any]
    UInt32 (*present)(const Unit&, AudioUnitElement) = nullptr;
};

/// Allocate the values of every scope, at their defaults. Throws std::bad_alloc.
/// [main]
void prepareParameters(Unit& unit);

/// Get or set a value. A value out of range becomes the nearest in range.
/// Errors  InvalidScope, InvalidElement, InvalidParameter: no such parameter; PropertyNotWritable: read-only;
///         InvalidPropertyValue: not a number.
/// [any]
OSStatus getParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                      Float32& out);
OSStatus setParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                      Float32 value);

/// The stored value of a parameter that the kind has.
/// [any]
Float32 parameterValue(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope,
                       AudioUnitElement element);

/// Store a value, for a parameter's setter.
/// [any]
void storeParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                    Float32 value);

/// Count an element's parameters, or list at most `most` of their IDs. Both return how many; the count may
/// change between two calls.
/// [any]
UInt32 parameterCount(const Unit& unit, AudioUnitScope scope, AudioUnitElement element);
UInt32 parameterList(const Unit& unit, AudioUnitScope scope, AudioUnitElement element,
                     AudioUnitParameterID* out, UInt32 most);

/// Describe a parameter.
/// Errors  InvalidParameter: no element of the scope has it.
/// [any]
OSStatus parameterInfo(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope,
                       AudioUnitParameterInfo& out);

} // namespace kvxplatform::audiounit
