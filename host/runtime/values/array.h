// Host arrays: one-dimensional, growing, of one element type.
#pragma once

#include "host/runtime/values/reference.h"
#include "host/runtime/values/type.h"
#include "host/runtime/values/value.h"

#include <vector>

struct REALarrayStruct;

namespace host {

/// Shape   elements lie one after the other in the storage that the record's eighth word names (in a host
/// whose
///         records are readable), each sizeInMemory(elementType()) wide; -1 is the upper bound of an empty
///         array.
/// Thread  [main]
class Array : public Ref<REALarrayStruct> {
public:
    using Ref::Ref;
    Array(Ref<REALarrayStruct> ref) : Ref(std::move(ref)) {}

    /// A new array of `count` zero or nil elements.
    static Array ofType(Base element, std::size_t count = 0);
    static Array of(const std::vector<HostInteger>& items);
    static Array of(const std::vector<float>& items);
    static Array of(const std::vector<double>& items);
    static Array of(const std::vector<std::string>& items);

    Base elementType() const;
    std::size_t count() const; ///< 0 for nil
    HostInteger upperBound() const { return static_cast<HostInteger>(count()) - 1; }

    /// Throws ProgramError for an index outside 0 to upperBound().
    Value at(HostInteger index) const;
    void put(HostInteger index, const Value& value);

    /// Insert in front of `index` (0 to upperBound() + 1).
    void insert(HostInteger index, const Value& value);
    void append(const Value& value) { insert(upperBound() + 1, value); }
    void remove(HostInteger index);

    std::vector<double> numbers() const; ///< all elements; throws where they are no numbers
};

/// The codes by which "RuntimeArrayCreateSingleDimBoundedArray" is told the element type. Only 0 is in use by
/// plug-ins; the others are this host's own.
enum ElementCode : std::intptr_t {
    elementInteger = 0,
    elementSingle = 1,
    elementDouble = 2,
    elementString = 3,
    elementObject = 4,
    elementVariant = 5,
    elementBoolean = 6,
    elementInt64 = 7,
};

} // namespace host
