#include "platform/hal/timer_driver.h"

#include "platform/hal/cycle.h"
#include "platform/support/border.h"

#include <chrono>
#include <thread>

namespace kvxplatform::hal {

namespace {

using Clock = std::chrono::steady_clock;
// Longest delay of the timer thread that later cycles make up for. After a longer pause, such as a sleep of
// the machine, the pace restarts.
constexpr std::chrono::seconds longestLag{1};

bool mayRun(const Device& device)
{
    return device.isRunning() && device.driver == Driver::timer && !device.mustEnd;
}

/// Converts a device's frames to deadlines on the host clock. Each rate has a new origin, so rounding errors
/// do not add up.
struct Pace {
    Clock::time_point origin = Clock::now();
    double rate = 0;
    double frames = 0; ///< frames that have run since the origin

    Clock::time_point due() const
    {
        return origin + std::chrono::nanoseconds(static_cast<std::int64_t>(frames * 1e9 / rate));
    }
};

/// Run one cycle and advance `pace`. Returns false if the timer thread has no cycle to run.
bool runDueCycle(Device& device, Pace& pace)
{
    const CycleScope scope(device);
    if (!mayRun(device)) return false;
    CycleBuffers& buffers = buffersOfNextCycle(device);
    const Settings& settings = buffers.settings;
    if (settings.rate != pace.rate || Clock::now() - pace.due() > longestLag)
        pace = {Clock::now(), settings.rate, 0};
    runCycle(device, buffers, settings.sliceFrames, true);
    pace.frames += settings.sliceFrames;
    return true;
}

void run(const DeviceRef& device)
{
    while (!device->mustEnd) {
        device->timerWake.wait();
        for (Pace pace; runDueCycle(*device, pace);) std::this_thread::sleep_until(pace.due());
    }
}

} // namespace

OSStatus ensureTimerThread(const DeviceRef& device)
{
    if (device->hasTimerThread) return noErr;
    return withinBorder(kAudioHardwareUnspecifiedError, [&] {
        std::thread(run, device).detach();
        device->hasTimerThread = true;
        return OSStatus{noErr};
    });
}

} // namespace kvxplatform::hal
