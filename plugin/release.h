// The release of handles of the host and the platform.
//
// An exception from a release function is swallowed: nothing is left to undo, and another exception may
// already be propagating. The handle then stays allocated.
// All functions: [any].
#pragma once

#include "plugin/catch_all.h"

/// Call `function(handle)`; ignore its result and its exceptions.
template <class Function, class Handle>
void release(Function& function, Handle handle) noexcept
{
    catchAll([&] { function(handle); });
}

/// The deleter of a std::unique_ptr that calls `function`.
template <auto& function>
struct Releases {
    template <class Handle>
    void operator()(Handle handle) const noexcept
    {
        release(function, handle);
    }
};
