// A replacement of dispatch_async, whose queued blocks wait until the test runs them. Any thread may call
// dispatch_async; run() runs the blocks on the calling thread.
#pragma once

#include <dispatch/dispatch.h>

#include <cstddef>
#include <functional>

namespace dispatch_spy {

/// waiting() is the number of queued blocks; faults() is the number of blocks queued for a queue other than
/// the main queue.
std::size_t waiting();
int faults();

/// Run the queued blocks in order, including blocks that are queued during the run. Returns the number of
/// blocks.
std::size_t run();

/// Drop the queued blocks, the function of setDuring() and the number of faults.
void reset();

/// Set a function that runs at the start of each call of dispatch_async. The function may throw.
void setDuring(std::function<void()> during);

} // namespace dispatch_spy
