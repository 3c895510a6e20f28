// Parameters: numbers that may be set while the unit renders.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// A row of a parameter table: `count` parameters with consecutive IDs.
struct Parameter {
    AudioUnitParameterID id; ///< ID of the first parameter
    UInt32 count;
    AudioUnitScope scope;
    const char* name;
    AudioUnitParameterUnit unit;
    Float32 least, most, initial;
    bool isReadOnly;

    /// Compute a parameter's value. Null: the stored value is returned. `index` is the parameter's ID minus
    /// `id`.
    /// [any]
    OSStatus (*get)(Unit&, const Parameter&, AudioUnitElement, UInt32 index, Float32& out);

    /// Set a parameter to a value that is in range. Null: the value is stored.
    /// [any]
    OSStatus (*set)(Unit&, const Parameter&, AudioUnitElement, UInt32 index, Float32 value);

    /// Returns  how many of the `count` parameters an element has at present. Null: all.
    /// [any]
    UInt32 (*present)(const Unit&, AudioUnitElement) = nullptr;
};

/// Allocate the parameter values of every scope and set them to the defaults. Throws std::bad_alloc.
/// [main]
void prepareParameters(Unit& unit);

/// Get or set a parameter's value. A value out of range is replaced by the nearest value in range.
/// Errors  InvalidScope, InvalidElement, InvalidParameter: no such parameter; PropertyNotWritable: the
///         parameter is read-only; InvalidPropertyValue: the value is not a number.
/// [any]
OSStatus getParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                      Float32& out);
OSStatus setParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                      Float32 value);

/// Returns  the stored value of a parameter. The unit kind must have the parameter.
/// [any]
Float32 parameterValue(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope,
                       AudioUnitElement element);

/// Store a parameter's value. For use in a parameter's setter.
/// [any]
void storeParameter(Unit& unit, AudioUnitParameterID id, AudioUnitScope scope, AudioUnitElement element,
                    Float32 value);

/// Count the parameters of an element, or list at most `most` of their IDs and return how many were listed.
/// The count may change between two calls.
/// [any]
UInt32 parameterCount(const Unit& unit, AudioUnitScope scope, AudioUnitElement element);
UInt32 parameterList(const Unit& unit, AudioUnitScope scope, AudioUnitElement element,
                     AudioUnitParameterID* out, UInt32 most);

/// Describe a parameter.
/// Errors  InvalidParameter: no element of the scope has the parameter.
/// [any]
OSStatus parameterInfo(const Unit& unit, AudioUnitParameterID id, AudioUnitScope scope,
                       AudioUnitParameterInfo& out);

} // namespace kvxplatform::audiounit
