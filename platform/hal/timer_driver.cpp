#include "platform/hal/timer_driver.h"

#include "platform/hal/cycle.h"

#include <chrono>
#include <exception>
#include <thread>

namespace kvxplatform::hal {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto longestLag = std::chrono::seconds(1); // a machine that slept is not made up for

bool mayTurn(const Device& device)
{
    return device.isRunning() && device.driver == Driver::timer && !device.mustEnd;
}

/// Where the device's time stands on the clock. A new origin at each change of rate: no rounding adds up.
struct Pace {
    Clock::time_point origin = Clock::now();
    double rate = 0;
    double frames = 0; ///< since the origin

    Clock::time_point due() const
    {
        return origin + std::chrono::nanoseconds(static_cast<std::int64_t>(frames * 1e9 / rate));
    }
};

/// One cycle, and when the next is due. False if there is nothing to turn.
bool turn(Device& device, Pace& pace)
{
    const std::lock_guard<std::mutex> lock(device.turnLock);
    if (!mayTurn(device)) return false;
    const Settings& settings = takeUpSettings(device);
    if (settings.rate != pace.rate || Clock::now() - pace.due() > longestLag)
        pace = {Clock::now(), settings.rate, 0};
    turnCycle(device, settings.sliceFrames, true);
    pace.frames += settings.sliceFrames;
    return true;
}

void run(const DeviceRef& device)
{
    while (!device->mustEnd) {
        device->timerWake.wait();
        for (Pace pace; turn(*device, pace);) std::this_thread::sleep_until(pace.due());
    }
}

} // namespace

OSStatus ensureTimerThread(const DeviceRef& device)
try {
    if (device->hasTimerThread) return noErr;
    std::thread(run, device).detach();
    device->hasTimerThread = true;
    return noErr;
} catch (const std::exception&) {
    return kAudioHardwareUnspecifiedError;
}

} // namespace kvxplatform::hal
