// The types of the host's language: their names, and the sizes of their values in memory.
// All functions: [any].
#pragma once

#include "abi/word.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace host {

enum class Base {
    none, ///< result type of a method that returns nothing
    boolean,
    int8,
    int16,
    int32,
    int64,
    uint8,
    uint16,
    uint32,
    uint64,
    integer,  ///< type "Integer", as wide as a pointer
    uinteger, ///< type "UInteger", as wide as a pointer
    single,
    float64, ///< type "Double"
    pointer, ///< type "Ptr"
    string,
    variant,
    memoryBlock,
    folderItem,
    object, ///< object of the class Type::className; "Object" allows every class
};

struct Type {
    Base base = Base::none;
    bool isArray = false;
    std::string className; ///< class of a Base::object, as spelled in the declaration; else empty

    bool isNumber() const { return !isArray && base >= Base::int8 && base <= Base::pointer; }
    bool isFloating() const { return !isArray && (base == Base::single || base == Base::float64); }
    bool isInteger() const { return isNumber() && !isFloating(); }
    /// Whether values of the type are counted: strings, objects, arrays, variants, …
    bool isReference() const { return isArray || base >= Base::string; }
    bool isVoid() const { return base == Base::none; }
};

/// Compare two types. The comparison ignores the case of class names.
bool operator==(const Type& left, const Type& right);
inline bool operator!=(const Type& left, const Type& right) { return !(left == right); }

/// The fixed-width base with the same memory format, such as Int32 or Int64 for Integer; else `base` itself.
Base fixedWidth(Base base);

/// Whether objects of every class fit the type.
bool isAnyObject(const Type& type);

/// Find a type by name, without regard to case: "Integer", "integer()" for an array. Any other name is the
/// name of a class, except that an empty name is Base::none.
Type typeNamed(std::string_view name);

/// The name of a type in the host's language: "Integer", "Single()", "Dictionary".
std::string typeName(const Type& type);

/// The size in bytes of a field, an array element or a variable of the type. A Boolean has one byte.
std::size_t sizeInMemory(const Type& type);

/// Whether two names of the host's language are equal; ASCII letters are compared without regard to case.
bool sameName(std::string_view left, std::string_view right);

/// Put the indefinite article before a noun: "an array", "a UInt32".
std::string withArticle(std::string_view noun);

/// The cost to pass a value as an argument of a type; empty if the value does not fit the type.
using Cost = std::optional<int>;

namespace cost {
constexpr int exact = 0;
constexpr int converted = 1;
constexpr int narrowed = 2; ///< cost of a conversion that may change a number
constexpr int boxed = 4;    ///< cost of a conversion to a variant
} // namespace cost

} // namespace host
