// Waiting for an audio thread, which wakes no other thread.
#pragma once

#include <chrono>
#include <thread>

namespace kvxplatform {

/// Return once `isOver()` is true, looking every 50 microseconds. Sleeps in between: a thread that yields
/// gives a whole time slice to each busy process of the machine. Thread [any]; a caller inside a slice
/// must not wait for that slice.
template <class Condition>
void waitUntil(Condition isOver)
{
    while (!isOver()) std::this_thread::sleep_for(std::chrono::microseconds(50));
}

} // namespace kvxplatform
