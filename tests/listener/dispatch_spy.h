// A spy instead of dispatch_async: queued blocks wait until the test runs them. dispatch_async may be called
// on any thread; run() runs the blocks on its calling thread.
#pragma once

#include <dispatch/dispatch.h>

#include <cstddef>
#include <functional>

namespace dispatch_spy {

/// The number of queued blocks, and of blocks for a queue other than the main queue.
std::size_t waiting();
int faults();

/// Run the queued blocks in order, with those that are queued during the run. Returns their number.
std::size_t run();

/// Drop the queued blocks and the `during` function.
void reset();

/// Set a function that runs at the start of each dispatch_async; it may throw.
void setDuring(std::function<void()> during);

} // namespace dispatch_spy
