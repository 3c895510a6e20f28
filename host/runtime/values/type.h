// The types that declarations name, and how wide each is in memory and in a call.
#pragma once

#include "abi/word.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

enum class Base {
    none, ///< no result
    boolean,
    int8,
    int16,
    int32,
    int64,
    uint8,
    uint16,
    uint32,
    uint64,
    integer,  ///< the host's Integer: as wide as a pointer
    uinteger, ///< likewise, unsigned
    single,
    float64, ///< "Double"
    pointer, ///< "Ptr"
    string,
    variant,
    memoryBlock,
    folderItem,
    object, ///< of the class named in Type::className ("Object" for any)
};

struct Type {
    Base base = Base::none;
    bool isArray = false;
    std::string className; ///< as declared; for Base::object only

    bool isNumber() const { return !isArray && base >= Base::int8 && base <= Base::pointer; }
    bool isFloating() const { return !isArray && (base == Base::single || base == Base::float64); }
    bool isInteger() const { return isNumber() && !isFloating(); }
    /// Counted values: strings, objects, arrays, variants and the like.
    bool isReference() const { return isArray || base >= Base::string; }
    bool exists() const { return base != Base::none; }
};

bool operator==(const Type& left, const Type& right); ///< class names without regard to case
inline bool operator!=(const Type& left, const Type& right) { return !(left == right); }

/// The type of that name, without regard to case; "integer()" is an array. A name of no basic type is a
/// class.
Type typeNamed(std::string_view name);

/// The type as a program would write it: "Integer", "Single()", "Dictionary".
std::string typeName(const Type& type);

/// Bytes of one value in memory: a direct field, an array element, a variable lent by reference. Boolean: 1.
std::size_t sizeInMemory(const Type& type);

/// Names of the host's language are compared without regard to case (ASCII letters).
bool sameName(std::string_view left, std::string_view right);

} // namespace host
