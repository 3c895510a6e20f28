// The host's numeric arrays and their elements.
// All functions: [main].
#pragma once

#include "plugin/host_exceptions.h"
#include "plugin/services.h"

/// A host array with elements of type `Element`. All arrays have the same structure; `Element` lets
/// the compiler compare a function's type with its method declaration.
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

/// Number of elements; 0 for any negative upper bound. The result has 64 bits because the largest upper bound
/// plus 1 does not fit the host's Integer.
inline std::int64_t arrayCount(REALarrayStruct* array)
{
    const std::int64_t upperBound = REALGetArrayUBound(array);
    return upperBound < 0 ? 0 : upperBound + 1;
}

/// Read the element at `index` of an array of HostInteger, float or double into `element`.
/// Errors  an index out of range raises "OutOfBoundsException" and returns false; `element` is unchanged. If
///         the host has no function that reads the array, `element` becomes 0.
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
