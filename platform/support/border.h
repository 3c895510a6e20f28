// The border between the platform's C functions and their callers: no C++ exception crosses it.
#pragma once

#include <new>
#include <type_traits>

namespace kvxplatform {

/// Run `body`, the body of a C function, and convert an exception into a result.
/// Returns  the result of `body`; `outOfMemory` after std::bad_alloc; `outOfResources` after any other
///          exception (the system has no thread or lock left).
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

/// Run `body`, the body of a C function, and return `failure` after any exception.
/// [any]
template <class Body>
std::invoke_result_t<Body> withinBorder(std::invoke_result_t<Body> failure, Body body) noexcept
{
    return withinBorder(failure, failure, body);
}

} // namespace kvxplatform
