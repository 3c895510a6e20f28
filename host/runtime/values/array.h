// Host arrays: one-dimensional arrays of one element type, which can grow.
// All functions: [main].
#pragma once

#include "host/runtime/values/value.h"

#include <vector>

namespace host {

/// A reference to a host array, or nil. The plug-in sees a REALarrayStruct; only with direct access
/// (Options::allowsDirectAccess) its field `elements` is the address of the elements.
/// Shape  contiguous elements of sizeInMemory(elementType()) bytes; an empty array has the upper bound -1.
class Array : public Ref<REALarrayStruct> {
public:
    static constexpr Kind kind = Kind::array;
    using Ref::Ref;
    Array(Ref<REALarrayStruct> ref) : Ref(std::move(ref)) {}

    /// Make an array of `count` elements, each zero or nil. Throws std::bad_alloc.
    static Array ofType(Base element, std::size_t count = 0);
    static Array of(const std::vector<HostInteger>& items);
    static Array of(const std::vector<float>& items);
    static Array of(const std::vector<double>& items);
    static Array of(const std::vector<std::string>& items);

    /// The type of the elements. Throws ProgramError if the array is nil.
    Base elementType() const;

    std::size_t count() const; ///< number of elements; 0 if the array is nil
    HostInteger upperBound() const { return static_cast<HostInteger>(count()) - 1; }

    /// Read or replace an element. Throws ProgramError if `index` is not 0 to upperBound(), or if `value`
    /// does not fit the element type.
    Value at(HostInteger index) const;
    void put(HostInteger index, const Value& value);

    /// Insert an element before the element `index`; upperBound() + 1 appends. Throws as put().
    void insert(HostInteger index, const Value& value);
    void append(const Value& value) { insert(upperBound() + 1, value); }
    void remove(HostInteger index);

    /// Read all elements as numbers. Throws ProgramError if an element is not a number.
    std::vector<double> numbers() const;
};

} // namespace host
