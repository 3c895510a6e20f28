// A value as a host program holds it: nil, a boolean, a number, or a reference to a counted host value.
#pragma once

#include "host/runtime/values/reference.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

struct REALstringStruct;
struct REALobjectStruct;
struct REALmemoryBlockStruct;
struct REALarrayStruct;
struct REALfolderItemStruct;

namespace host {

class Object;
class MemoryBlock;
class Array;
class FolderItem;
class String;

/// Numbers keep the type they were made with until a declaration asks for another one: integers are held in
/// 64 bits, singles and doubles keep every bit (also of values that are not numbers).
///
/// The accessors convert where nothing is lost in meaning (any number to double, any number to an integer,
/// truncated toward zero) and throw ProgramError where the value is of another kind. [main]
class Value {
public:
    Value() = default; ///< nil
    Value(std::nullptr_t) {}

    template <class T, std::enable_if_t<std::is_arithmetic_v<T>, int> = 0>
    Value(T number)
    {
        if constexpr (std::is_same_v<T, bool>)
            held_ = number;
        else if constexpr (std::is_same_v<T, float>)
            held_ = number;
        else if constexpr (std::is_floating_point_v<T>)
            held_ = static_cast<double>(number);
        else if constexpr (std::is_unsigned_v<T>)
            held_ = static_cast<std::uint64_t>(number);
        else
            held_ = static_cast<std::int64_t>(number);
    }

    Value(const char* utf8); ///< a new string; null is nil
    Value(const std::string& utf8);
    Value(std::string_view utf8);

    /// Any reference, also an Object, MemoryBlock, Array, FolderItem or String. A reference to nil is nil;
    /// one to a variant becomes the value inside.
    template <class Record>
    Value(const Ref<Record>& ref) : Value(AnyRef(ref), FromAny{})
    {
    }

    bool isNil() const { return std::holds_alternative<std::monostate>(held_); }
    bool isBoolean() const { return std::holds_alternative<bool>(held_); }
    bool isNumber() const { return isInteger() || isFloating(); }
    bool isInteger() const;
    bool isFloating() const; ///< single or double
    bool isText() const { return isReference(Kind::string); }
    bool isReference(Kind kind) const;

    bool boolean() const;
    std::int64_t integer() const; ///< a value above 2^63 - 1 wraps; what is not a number gives INT64_MIN
    std::uint64_t unsigned64() const;
    float single() const;
    double number() const;
    std::string text() const; ///< UTF-8, converted from the string's encoding; "" for nil
    Object object() const;    ///< nil gives a nil Object; likewise below
    MemoryBlock memoryBlock() const;
    Array array() const;
    FolderItem folderItem() const;
    String string() const;

    /// The reference inside, or nil for numbers and booleans.
    AnyRef reference() const;

    /// What the value is, for messages: "nil", "a boolean", "an integer", "a string", "an object of class
    /// Dictionary".
    std::string describe() const;

    /// The value in the form in which a program would print it.
    std::string print() const;

    using Held = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, float, double, AnyRef>;
    const Held& held() const { return held_; }

private:
    struct FromAny {};
    Value(AnyRef ref, FromAny);

    Held held_;
};

/// Equality of two values as keys of a dictionary: numbers by value, text by its UTF-8 bytes, references by
/// identity.
bool sameValue(const Value& left, const Value& right);

/// An argument of a call: a value, or (by `byref`) a variable that the call may change.
struct ByRef {
    Value* variable;
};
inline ByRef byref(Value& variable) { return {&variable}; }

struct Argument {
    template <class T, std::enable_if_t<std::is_constructible_v<Value, T&&>, int> = 0>
    Argument(T&& plain) : value(std::forward<T>(plain))
    {
    }
    Argument(ByRef reference) : value(*reference.variable), variable(reference.variable) {}

    Value value;
    Value* variable = nullptr;
};

} // namespace host
