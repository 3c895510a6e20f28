// Host arrays: one-dimensional, growing, of one element type.
// All functions: [main].
#pragma once

#include "host/runtime/values/value.h"

#include <vector>

namespace host {

/// Shape  The elements are contiguous, sizeInMemory(elementType()) bytes each. If the plug-in may read
///        records, the record's eighth word is the address of the elements. An empty array has the upper
///        bound -1.
class Array : public Ref<REALarrayStruct> {
public:
    static constexpr Kind kind = Kind::array;
    using Ref::Ref;
    Array(Ref<REALarrayStruct> ref) : Ref(std::move(ref)) {}

    /// Make an array of `count` elements that are zero or nil. Throws std::bad_alloc.
    static Array ofType(Base element, std::size_t count = 0);
    static Array of(const std::vector<HostInteger>& items);
    static Array of(const std::vector<float>& items);
    static Array of(const std::vector<double>& items);
    static Array of(const std::vector<std::string>& items);

    /// Throws ProgramError for nil.
    Base elementType() const;

    std::size_t count() const; ///< number of elements; 0 for nil
    HostInteger upperBound() const { return static_cast<HostInteger>(count()) - 1; }

    /// Read or replace an element. Throws ProgramError for an index outside 0 to upperBound(), and if the
    /// value does not fit the element type.
    Value at(HostInteger index) const;
    void put(HostInteger index, const Value& value);

    /// Insert before the element `index`, which is 0 to upperBound() + 1. Throws as put.
    void insert(HostInteger index, const Value& value);
    void append(const Value& value) { insert(upperBound() + 1, value); }
    void remove(HostInteger index);

    /// All elements as numbers. Throws ProgramError if an element is not a number.
    std::vector<double> numbers() const;
};

} // namespace host
