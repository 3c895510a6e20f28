// The types in declarations: names, and sizes in memory.
// All functions: [any].
#pragma once

#include "abi/word.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace host {

enum class Base {
    none, ///< type of a method without a result
    boolean,
    int8,
    int16,
    int32,
    int64,
    uint8,
    uint16,
    uint32,
    uint64,
    integer,  ///< the host's Integer, as wide as a pointer
    uinteger, ///< unsigned form of Integer
    single,
    float64, ///< type "Double"
    pointer, ///< type "Ptr"
    string,
    variant,
    memoryBlock,
    folderItem,
    object, ///< object of the class Type::className; "Object" is any class
};

struct Type {
    Base base = Base::none;
    bool isArray = false;
    std::string className; ///< class name for Base::object, in the spelling of the declaration; else empty

    bool isNumber() const { return !isArray && base >= Base::int8 && base <= Base::pointer; }
    bool isFloating() const { return !isArray && (base == Base::single || base == Base::float64); }
    bool isInteger() const { return isNumber() && !isFloating(); }
    /// Whether values of the type are counted: strings, objects, arrays, variants, …
    bool isReference() const { return isArray || base >= Base::string; }
    bool exists() const { return base != Base::none; }
};

/// Class names are compared without regard to case.
bool operator==(const Type& left, const Type& right);
inline bool operator!=(const Type& left, const Type& right) { return !(left == right); }

/// The base with the same representation and a fixed width: Int32 or Int64 for Integer.
Base fixedWidth(Base base);

/// Whether an object of any class fits the type.
bool isAnyObject(const Type& type);

/// The type of a name, without regard to case; "integer()" is an array. A name that no basic type has is the
/// name of a class.
Type typeNamed(std::string_view name);

/// The name of a type in a program: "Integer", "Single()", "Dictionary".
std::string typeName(const Type& type);

/// The size in bytes of a field, an array element or a variable of the type; 1 for Boolean.
std::size_t sizeInMemory(const Type& type);

/// Whether two names of the host's language are equal; ASCII letters are compared without regard to case.
bool sameName(std::string_view left, std::string_view right);

/// The noun with its indefinite article: "an array", "a UInt32".
std::string withArticle(std::string_view noun);

/// The cost of passing a value as a type; nothing if the value does not fit the type.
using Cost = std::optional<int>;

namespace cost {
constexpr int exact = 0;
constexpr int converted = 1;
constexpr int narrowed = 2; ///< cost of a conversion that may change the number
constexpr int boxed = 4;    ///< cost of a variant
} // namespace cost

} // namespace host
