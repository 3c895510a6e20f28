// Counts allocations on threads that must not allocate. A program that links it interposes the C allocator,
// or hooks that of a sanitizer.
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
