// The release of references to host values and platform objects (handles).
//
// An exception from a release function is swallowed because nothing remains to be undone and another
// exception may already be propagating. After such an exception, the handle stays allocated.
// All functions: [any].
#pragma once

#include "plugin/exception_border.h"

/// Call `function(handle)` and ignore its result and its exceptions.
template <class Function, class Handle>
void release(Function& function, Handle handle) noexcept
{
    catchAll([&] { function(handle); });
}

/// Deleter of a std::unique_ptr that releases the pointer with `function`.
template <auto& function>
struct Releases {
    template <class Handle>
    void operator()(Handle handle) const noexcept
    {
        release(function, handle);
    }
};
