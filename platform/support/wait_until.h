// Waiting for an audio thread, which wakes no other thread.
#pragma once

#include <chrono>
#include <thread>

namespace kvxplatform {

/// Return once `isOver()` is true, looking every 50 microseconds. Sleeps in between: a thread that yields
/// gives a whole time slice to each busy process of the machine. Thread [any but audio].
template <class Condition>
void waitUntil(Condition isOver)
{
    while (!isOver()) std::this_thread::sleep_for(std::chrono::microseconds(50));
}

} // namespace kvxplatform
