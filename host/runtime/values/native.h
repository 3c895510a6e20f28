// Native values: the C form of a host value, in a call, in a field and in an array element.
// All functions: [main].
#pragma once

#include "host/runtime/values/type.h"
#include "host/runtime/values/value.h"

#include <cstdint>
#include <string>

namespace host {

/// Memory for one native value of any type. The widest member is first, so that `= {}` zeroes all members.
union Native {
    std::uint64_t word64;
    std::uint8_t byte;
    std::uint16_t word16;
    std::uint32_t word32;
    float single;
    double number;
    void* pointer;
};

/// A native value. If it is the address of a counted value, `reference` keeps that value alive;
/// reference.detach() passes the reference to the new owner of the native value.
struct Converted {
    Native native = {};
    AnyRef reference;
};

/// The cost to pass a value as a type; empty if the value does not fit the type.
Cost conversionCost(const Value& value, const Type& type);

/// Convert a value to a native value of `type`. A truncation toward zero makes an integer from a float. An
/// integer fits if its bits fit, signed or unsigned, so -1 fits UInt32. Nil fits every reference.
/// Errors  ProgramError if the value does not fit; the message starts with `what`, such as "SampleRate".
Converted toNative(const Value& value, const Type& type, const std::string& what);

/// Convert the native value at `memory` to a value. If `isOwned`, the value takes over the reference at
/// `memory`; if not, the value adds a reference.
/// Errors  ProgramError if `memory` holds an address where no live value of the type is.
Value fromNative(const void* memory, const Type& type, bool isOwned);

/// Copy a native value of type `type` to `memory`.
/// [any]
void storeNative(void* memory, const Native& native, const Type& type);

} // namespace host
