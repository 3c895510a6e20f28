// The host's numeric arrays, and reading their elements.
#pragma once

#include "plugin/exceptions.h"
#include "plugin/services.h"

/// A host array of one type of element, so that a declaration and its function agree on it. The record is the
/// same for all.
template <class Element>
struct ArrayOf : REALarrayStruct {
};

template <class Element>
Service<GetElement<Element>(REALarrayStruct*)>& arrayGetter();
template <>
inline auto arrayGetter<HostInteger>() -> decltype(REALGetArrayValueInteger)&
{
    return REALGetArrayValueInteger;
}
template <>
inline auto arrayGetter<float>() -> decltype(REALGetArrayValueSingle)&
{
    return REALGetArrayValueSingle;
}
template <>
inline auto arrayGetter<double>() -> decltype(REALGetArrayValueDouble)&
{
    return REALGetArrayValueDouble;
}

/// How many elements `array` has; any negative upper bound is an empty array. 64 bits, since the largest
/// upper bound plus one is past the host's Integer.
inline std::int64_t arrayCount(REALarrayStruct* array)
{
    const std::int64_t upperBound = REALGetArrayUBound(array);
    return upperBound < 0 ? 0 : upperBound + 1;
}

/// Read element `index` of an array of HostInteger, float or double into `element`.
/// Errors  an index past the end raises the out-of-bounds exception and returns false, `element` unchanged; a
///         host without a getter gives 0.
/// Thread  [main].
template <class Element>
bool readArrayElement(REALarrayStruct* array, HostInteger index, Element& element)
{
    const std::int64_t count = arrayCount(array);
    if (index < 0 || index >= count) {
        RaiseOutOfBoundsException(index, 0, count, "index", "");
        return false;
    }
    if (rbversion_rbversion < hostWithOpaqueRecords && array->elements) {
        element = static_cast<const Element*>(array->elements)[index];
        return true;
    }
    const GetElement<Element> get = arrayGetter<Element>()(array);
    element = get ? get(array, index) : Element();
    return true;
}
