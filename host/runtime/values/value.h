// A value of the host's language: nil, a boolean, a number, or a reference to a counted host value.
// All functions: [main].
#pragma once

#include "host/runtime/values/folder_item.h"
#include "host/runtime/values/host_string.h"
#include "host/runtime/values/memory_block.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace host {

class Array;
class Object;

/// Shape   integers have 64 bits; singles and doubles keep every bit, also of a NaN.
/// Errors  boolean(), text() and as() throw ProgramError for a value of another kind. The number accessors
///         throw only for a value that is not a number; they make an integer by truncation toward zero.
class Value {
public:
    Value() = default; ///< Make the value nil.
    Value(std::nullptr_t) {}

    template <class T, std::enable_if_t<std::is_arithmetic_v<T>, int> = 0>
    Value(T number)
    {
        if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, float>)
            held_ = number;
        else if constexpr (std::is_floating_point_v<T>)
            held_ = static_cast<double>(number);
        else if constexpr (std::is_unsigned_v<T>)
            held_ = static_cast<std::uint64_t>(number);
        else
            held_ = static_cast<std::int64_t>(number);
    }

    Value(const char* utf8); ///< Make a string value; nil if `utf8` is null.
    Value(const std::string& utf8);
    Value(std::string_view utf8);

    /// Make a value from a reference: an Object, a MemoryBlock, an Array, … A nil reference makes nil; a
    /// reference to a variant makes the value in the variant.
    template <class Record>
    Value(const Ref<Record>& ref) : Value(AnyRef(ref), FromAny{})
    {
    }

    bool isNil() const { return std::holds_alternative<std::monostate>(held_); }
    bool isBoolean() const { return std::holds_alternative<bool>(held_); }
    bool isNumber() const { return isInteger() || isFloating(); }
    bool isInteger() const;
    bool isFloating() const; ///< Whether the value is a single or a double.
    bool isText() const { return isReference(Kind::string); }
    bool isReference(Kind kind) const;

    bool boolean() const;
    std::int64_t integer() const; ///< Numbers from 2^63 wrap around; NaN returns INT64_MIN.
    std::uint64_t unsigned64() const;
    float single() const;
    double number() const;
    std::string text() const; ///< Return the text in UTF-8; "" for nil. May throw as convertText().

    /// Return the value as a Handle, which is a String, MemoryBlock, …; a nil value returns a nil Handle.
    template <class Handle>
    Handle as() const
    {
        void* address = referenceOf(Handle::kind).detach();
        return Handle(Handle::adopt(static_cast<typename Handle::Record*>(address)));
    }
    MemoryBlock memoryBlock() const { return as<MemoryBlock>(); }
    FolderItem folderItem() const { return as<FolderItem>(); }
    String string() const { return as<String>(); }
    Array array() const;   ///< Callers include array.h.
    Object object() const; ///< defined in calls/object.cpp; callers include object.h

    /// Return the reference in the value; a nil reference if the value is a number or a boolean.
    AnyRef reference() const;

    /// Describe the value for messages, for example: "nil", "an integer", "an object of class Dictionary".
    std::string describe() const;

    /// Convert the value to the text that a program prints for it.
    std::string print() const;

    using Held = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, float, double, AnyRef>;
    const Held& held() const { return held_; }

private:
    struct FromAny {};
    Value(AnyRef ref, FromAny);
    AnyRef referenceOf(Kind kind) const;

    Held held_;
};

/// Whether two values are the same key of a dictionary. Numbers are equal by value, strings by their text in
/// UTF-8, other references if they refer to one value.
bool sameValue(const Value& left, const Value& right);

/// Make a variant that contains the value, which may be nil. Throws std::bad_alloc.
Ref<REALobjectStruct> newVariant(const Value& value);

/// Truncate a number toward zero to 64 bits. NaN and numbers outside the range return INT64_MIN.
/// [any]
std::int64_t truncatedToInt64(double number);

/// Whether a value is an integer above 2^63 - 1.
bool isAboveInt64(const Value& value);

/// A variable that a called method may change.
struct ByRef {
    Value* variable;
};
inline ByRef byref(Value& variable) { return {&variable}; }

/// An argument of a call: a value, or a variable that the called method may change.
struct Argument {
    template <class T, std::enable_if_t<std::is_constructible_v<Value, T&&>, int> = 0>
    Argument(T&& plain) : value(std::forward<T>(plain))
    {
    }
    Argument(ByRef reference) : value(*reference.variable), variable(reference.variable) {}

    Value value;
    Value* variable = nullptr; ///< variable that receives the changed value; null if the argument is a value
};

} // namespace host
