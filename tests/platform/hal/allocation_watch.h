// Counts allocations on threads that must not allocate. A program that links this code replaces the C
// allocator's functions, or installs hooks in a sanitizer's allocator.
#pragma once

namespace watch {

/// Count the calling thread's allocations and frees from now on.
void watchThisThread();

/// Stop counting on all threads.
void stop();

/// Stop counting and set the count to 0.
void reset();

int allocations();

} // namespace watch
