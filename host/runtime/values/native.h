// Values in the form in which C functions, fields and array elements have them.
#pragma once

#include "abi/word.h"
#include "host/runtime/classes/declaration.h"
#include "host/runtime/values/type.h"
#include "host/runtime/values/value.h"

#include <cstdint>
#include <optional>
#include <string>

namespace host {

/// Memory for one native value of any type. The widest member is the first, so that = {} zeroes all.
union Native {
    std::uint64_t word64;
    std::uint8_t byte;
    std::uint16_t word16;
    std::uint32_t word32;
    float single;
    double number;
    void* pointer;
};

/// A native value, and what keeps it alive while it is lent.
struct Lent {
    Native native = {};
    AnyRef keep;
};

/// How badly a value fits a type: 0 exactly, more with each conversion; nothing where it does not fit at all.
std::optional<int> misfit(const Value& value, const Type& type);

/// The value as `type`. Numbers are truncated toward zero; an integer fits if its bits do (so -1 is a
/// UInt32). Nil is nil for every reference. Throws ProgramError, beginning with `what` ("SampleRate",
/// "parameter size").
Lent toNative(const Value& value, const Type& type, const std::string& what);

/// The value at `memory`. A reference there is shared, or taken over if `isOwned`.
Value fromNative(const void* memory, const Type& type, bool isOwned);

Value literalValue(const Literal& literal);

/// Write as many bytes of `native` as the type has to `memory`.
void storeNative(void* memory, const Native& native, const Type& type);

/// A field that another thread may touch: booleans and references are published with their contents, all else
/// is indivisible only. An 8-byte field that is not 8-aligned is copied plainly.
Native loadField(const void* field, const Type& type);
void storeField(void* field, const Native& native, const Type& type);
void* exchangeReference(void* field, void* reference);

} // namespace host
