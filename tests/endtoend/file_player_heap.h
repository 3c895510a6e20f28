// Measures the heap: every program that links it has its allocations counted, those of the libraries below it
// too. It stands in front of the C allocator, or hooks the sanitizers' one.
#pragma once

#include <cstddef>

namespace heap {

/// Bytes allocated now.
std::size_t now();

/// The most there were since the last call of forgetMost.
std::size_t most();
void forgetMost();

} // namespace heap
