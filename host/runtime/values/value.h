// A value as a program holds it: nil, a boolean, a number, or a reference to a counted host value.
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

/// A number keeps its own type until a declaration requires another type: integers are held in 64 bits,
/// singles and doubles keep every bit, even of a NaN.
///
/// The accessors convert any number to a double, and any number to an integer by truncation toward zero. They
/// throw ProgramError for a value of another kind.
class Value {
public:
    Value() = default; ///< Make nil.
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

    Value(const char* utf8); ///< Make a new string; nil for null.
    Value(const std::string& utf8);
    Value(std::string_view utf8);

    /// Share any reference: an Object, a MemoryBlock, an Array, … A reference to nil makes nil; a reference
    /// to a variant makes the value in the variant.
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
    std::int64_t integer() const; ///< Numbers of 2^63 and more wrap around; NaN gives INT64_MIN.
    std::uint64_t unsigned64() const;
    float single() const;
    double number() const;
    std::string text() const; ///< The text in UTF-8; "" for nil. Throws as convertText, too.

    /// The value as a handle (String, MemoryBlock, …); nil makes a nil handle.
    template <class Handle>
    Handle as() const
    {
        auto* address = referenceOf(Handle::kind).detach();
        return Handle(Handle::adopt(static_cast<typename Handle::Record*>(address)));
    }
    MemoryBlock memoryBlock() const { return as<MemoryBlock>(); }
    FolderItem folderItem() const { return as<FolderItem>(); }
    String string() const { return as<String>(); }
    Array array() const;   ///< Include array.h to call this function.
    Object object() const; ///< Include object.h to call this function.

    /// The reference in the value; nil for a number or a boolean.
    AnyRef reference() const;

    /// Describe the value for messages: "nil", "a boolean", "an integer", "a string", "an object of class
    /// Dictionary".
    std::string describe() const;

    /// Print the value as a program prints it.
    std::string print() const;

    using Held = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, float, double, AnyRef>;
    const Held& held() const { return held_; }

private:
    struct FromAny {};
    Value(AnyRef ref, FromAny);
    AnyRef referenceOf(Kind kind) const;

    Held held_;
};

/// Whether two values are the same key of a dictionary. Numbers are compared by value, texts by their UTF-8
/// bytes, other references by identity.
bool sameValue(const Value& left, const Value& right);

/// Make a variant that contains the value, which may be nil. Throws std::bad_alloc.
Ref<REALobjectStruct> newVariant(const Value& value);

/// Truncate a number toward zero to 64 bits; NaN and numbers out of range give INT64_MIN.
/// [any]
std::int64_t truncatedToInt64(double number);

/// A variable that a call may change.
struct ByRef {
    Value* variable;
};
inline ByRef byref(Value& variable) { return {&variable}; }

/// An argument of a call: a value, or a variable.
struct Argument {
    template <class T, std::enable_if_t<std::is_constructible_v<Value, T&&>, int> = 0>
    Argument(T&& plain) : value(std::forward<T>(plain))
    {
    }
    Argument(ByRef reference) : value(*reference.variable), variable(reference.variable) {}

    Value value;
    Value* variable = nullptr; ///< variable that receives the changed value; null for a value
};

} // namespace host
