#include "platform/hal/timer_driver.h"

#include "platform/hal/cycle.h"

#include <chrono>
#include <thread>

namespace kvxplatform::hal {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto longestLag = std::chrono::seconds(1); // a machine that slept is not made up for

bool mayTurn(const Device& device) { return device.isRunning && device.driver == Driver::timer; }

/// Turn until there is nothing to turn, or the rate is another. `lock` is held at both ends.
void turnAtOneRate(Device& device, std::unique_lock<std::mutex>& lock)
{
    const double rate = device.running.rate;
    Clock::time_point origin = Clock::now();
    double frames = 0;
    while (!device.mustEnd && mayTurn(device) && device.running.rate == rate) {
        const UInt32 slice = device.running.sliceFrames;
        turnCycle(device, slice, true);
        frames += slice;
        const auto deadline =
            origin + std::chrono::nanoseconds(static_cast<std::int64_t>(frames * 1e9 / rate));
        if (Clock::now() - deadline > longestLag) origin = Clock::now(), frames = 0;
        lock.unlock();
        std::this_thread::sleep_until(deadline);
        lock.lock();
    }
}

void run(const DeviceRef& device)
{
    std::unique_lock<std::mutex> lock(device->cycleLock);
    for (;;) {
        device->timerWake.wait(lock, [&] { return device->mustEnd || mayTurn(*device); });
        if (device->mustEnd) return;
        turnAtOneRate(*device, lock);
    }
}

} // namespace

void ensureTimerThread(const DeviceRef& device)
{
    if (device->hasTimerThread) return;
    device->hasTimerThread = true;
    std::thread(run, device).detach();
}

} // namespace kvxplatform::hal
