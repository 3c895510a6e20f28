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

/// How many parameter IDs a scope has, and the one at `index` of them.
UInt32 parameterCount(const Unit& unit, AudioUnitScope scope);
void parameterList(const Unit& unit, AudioUnitScope scope, AudioUnitParameterID* out);

/// What a parameter is. InvalidParameter if there is none.
OSStatus parameterInfo(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope,
                       AudioUnitParameterInfo& out);

} // namespace kvxplatform::audiounit
