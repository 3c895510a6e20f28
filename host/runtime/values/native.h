// Native values: the C form of a value in a call, in a field and in an array element.
// All functions: [main].
#pragma once

#include "host/runtime/values/type.h"
#include "host/runtime/values/value.h"

#include <cstdint>
#include <string>

namespace host {

/// Memory for one native value of any type. The widest member is the first one, so that = {} zeroes them all.
union Native {
    std::uint64_t word64;
    std::uint8_t byte;
    std::uint16_t word16;
    std::uint32_t word32;
    float single;
    double number;
    void* pointer;
};

/// A native value, with the reference that keeps a counted value alive. `reference.detach()` gives the
/// reference to the new owner of the native value.
struct Converted {
    Native native = {};
    AnyRef reference;
};

/// The cost of passing a value as a type.
Cost conversionCost(const Value& value, const Type& type);

/// Convert a value to a native value of `type`. Numbers are truncated toward zero. An integer fits if its
/// bits fit, signed or unsigned, so that -1 fits UInt32. Nil fits every reference.
/// Throws  ProgramError if the value does not fit; the message starts with `what`, such as "SampleRate".
Converted toNative(const Value& value, const Type& type, const std::string& what);

/// Convert the native value at `memory`. The result takes over the reference there if `isOwned`, and adds a
/// reference otherwise.
/// Throws  ProgramError if `memory` has an address where no live value of the type is.
Value fromNative(const void* memory, const Type& type, bool isOwned);

/// Copy a native value to `memory`, in the size of the type.
/// [any]
void storeNative(void* memory, const Native& native, const Type& type);

} // namespace host
