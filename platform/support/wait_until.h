// Waiting for a render thread, which does not signal its progress.
#pragma once

#include <chrono>
#include <thread>

namespace kvxplatform {

/// Wait until `isOver()` returns true. The wait sleeps for 50 microseconds between two checks; a yield
/// instead would give a whole time slice to every busy process. A render call must not wait for its own end.
/// [any]
template <class Condition>
void waitUntil(Condition isOver)
{
    while (!isOver()) std::this_thread::sleep_for(std::chrono::microseconds(50));
}

} // namespace kvxplatform
