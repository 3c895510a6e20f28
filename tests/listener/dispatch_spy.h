// A spy in the place of dispatch_async: blocks wait here until the test runs them. Threads: blocks may come
// from any; they are run by the one that asks.
#pragma once

#include <dispatch/dispatch.h>

#include <cstddef>
#include <functional>

namespace dispatch_spy {

/// Blocks that wait, all on the main queue; one on another queue counts as a fault.
std::size_t waiting();
int faults();

/// Run what waits, in order, also what is queued meanwhile. Returns how many ran.
std::size_t run();

/// Drop what waits, and `during`.
void reset();

/// Runs inside each dispatch_async, before the block is taken; it may throw.
void setDuring(std::function<void()> during);

} // namespace dispatch_spy
