// The border of the platform's C functions: no C++ exception crosses it.
#pragma once

#include <new>
#include <type_traits>

namespace kvxplatform {

/// Run the body of a C function.
/// Returns  the result of `body`; `outOfMemory` after std::bad_alloc; `outOfResources` after any other
///          exception (no thread, no lock).
/// [any]
template <class Body>
std::invoke_result_t<Body> withinBorder(std::invoke_result_t<Body> outOfMemory,
                                        std::invoke_result_t<Body> outOfResources, Body body) noexcept
try {
    return body();
} catch (const std::bad_alloc&) {
    return outOfMemory;
} catch (...) {
    return outOfResources;
}

/// Run the body of a C function that has one result for all exceptions.
/// [any]
template <class Body>
std::invoke_result_t<Body> withinBorder(std::invoke_result_t<Body> failure, Body body) noexcept
{
    return withinBorder(failure, failure, body);
}

} // namespace kvxplatform
