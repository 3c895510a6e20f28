// An alarm that rings when memory is asked for on a thread that must not.
//
// The program that links it stands in front of the C allocator, or hooks the sanitizers' one.
#pragma once

namespace watch {

/// From now on, this thread's allocations ring.
void armThisThread();

/// Nobody's ring any more, until a thread is armed again.
void disarm();

/// As disarm, and the count begins anew.
void reset();

int rings();

} // namespace watch
