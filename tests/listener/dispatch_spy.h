// A replacement of dispatch_async, whose queued blocks wait until the test runs them. Any thread may call
// dispatch_async; run() runs the blocks on the calling thread.
#pragma once

#include "tests/support/platform_spy.h"

#include <dispatch/dispatch.h>

#include <cstddef>

namespace dispatch_spy {

/// Return the number of queued blocks. A block on a queue other than the main queue is a fault in
/// spy::faults().
std::size_t waiting();

/// Run the queued blocks in order, including blocks that are queued during the run. Returns the number of
/// blocks.
std::size_t run();

/// Drop the queued blocks.
void reset();

} // namespace dispatch_spy
