// Parameters: numbers that may change while sound runs.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

struct Parameter {
    AudioUnitParameterID id; // the first of `count`
    UInt32 count;
    AudioUnitScope scope;
    const char* name;
    AudioUnitParameterUnit unit;
    Float32 least, most, initial;
    bool isReadOnly;

    /// Instead of the stored value, where there is none. `index` counts from `id`.
    OSStatus (*get)(Unit&, const Parameter&, AudioUnitElement, UInt32 index, Float32& out);
    /// Instead of storing the value, which is in range already.
    OSStatus (*set)(Unit&, const Parameter&, AudioUnitElement, UInt32 index, Float32 value);

    /// How many of `count` an element has now; null: all of them. Thread [any], [audio] too.
    UInt32 (*present)(const Unit&, AudioUnitElement) = nullptr;
};

/// Room for the values of every scope, at their defaults. Throws std::bad_alloc.
void prepareParameters(Unit& unit);

/// Thread [any], [audio] too. Values out of range become the nearest in range; one that is not a number is
/// refused.
OSStatus getParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                      Float32& out);
OSStatus setParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                      Float32 value);

/// The stored value of a parameter that the kind is known to have. Thread [any], [audio] too.
Float32 parameterValue(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope,
                       AudioUnitElement element);

/// Store a value, for a parameter's own setter. Thread [any], [audio] too.
void storeParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                    Float32 value);

/// How many parameters an element of the unit has.
UInt32 parameterCount(const Unit& unit, AudioUnitScope scope, AudioUnitElement element);

/// Their IDs, at most `most`. Returns how many: the count may have changed meanwhile.
UInt32 parameterList(const Unit& unit, AudioUnitScope scope, AudioUnitElement element,
                     AudioUnitParameterID* out, UInt32 most);

/// What a parameter is. InvalidParameter if no element of the scope has it.
OSStatus parameterInfo(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope,
                       AudioUnitParameterInfo& out);

} // namespace kvxplatform::audiounit
