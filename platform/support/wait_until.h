// Waiting for a render thread, which signals no condition.
#pragma once

#include <chrono>
#include <thread>

namespace kvxplatform {

/// Wait until `isOver()`, checked every 50 microseconds. It sleeps in between, because a yield would give a
/// whole time slice to every busy process. A render call must not wait for itself.
/// [any]
template <class Condition>
void waitUntil(Condition isOver)
{
    while (!isOver()) std::this_thread::sleep_for(std::chrono::microseconds(50));
}

} // namespace kvxplatform
