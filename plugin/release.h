// Releases handles of the host and the platform.
//
// A release function that throws keeps its handle. The exception is swallowed: nothing is left to undo, and
// another exception may already be propagating.
#pragma once

#include "plugin/catch_all.h"

/// Call `function(handle)`; ignore its result and its exceptions. [any]
template <class Function, class Handle>
void release(Function& function, Handle handle) noexcept
{
    catchAll([&] { function(handle); });
}

/// A std::unique_ptr deleter that releases through `function`.
template <auto& function>
struct Releases {
    template <class Handle>
    void operator()(Handle handle) const noexcept
    {
        release(function, handle);
    }
};
