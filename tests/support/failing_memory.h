// Memory that runs out when a test says so: operator new of the whole program, its libraries included. Not
// under the thread sanitizer, which brings one of its own.
#pragma once

#include <cstdlib>

namespace support {

/// Whether a piece of memory may be had now: the test's own rule, asked for each one, on every thread.
bool mayAllocate();

} // namespace support
