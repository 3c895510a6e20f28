// The housekeeper, a background thread for tasks that an I/O cycle must not do: it opens and closes hardware,
// frees removed procedures and notifies listeners. It also checks that running hardware continues to run
// cycles.
#include "platform/hal/apply_settings.h"
#include "platform/hal/device_changes.h"
#include "platform/hal/device_end.h"
#include "platform/hal/device_list.h"
#include "platform/hal/driver.h"
#include "platform/hal/housekeeper_signal.h"
#include "platform/hal/listeners.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/sound_server.h"
#include "platform/support/border.h"

#include <cstdlib>
#include <thread>

namespace kvxplatform::hal {

namespace {

constexpr std::int64_t watchNanos = 100'000'000; // time between two checks of running hardware
// Delay before a retry, while a cycle still uses memory that is to be freed.
constexpr std::int64_t retryNanos = 5'000'000;

void wake() { housekeeperSignal().raise(); }

/// Do the device's pending tasks. Returns true if no task is left.
bool tidy(const DeviceRef& device)
{
    if (device->mustApply.exchange(false) && applySettings(device) != noErr) {
        // The setter, called inside a cycle, has returned success, so its caller learns of the restored
        // settings by a notification.
        postNewRate(*device);
        postNewSlice(*device);
    }
    const bool hasNewState = device->hasNewRunningState.exchange(false);
    const bool hasRemoved = device->hasRemovedProcs.exchange(false);
    if (!hasNewState && !hasRemoved) return true;
    bool isDriven, isTidy;
    {
        const std::lock_guard<std::mutex> control(device->control);
        isDriven = settleDriver(device) == noErr;
        isTidy = device->procs.sweep();
        forgetIfUnused(device);
    }
    // A start requested inside a cycle has returned success, so a later failure shows as the device's death.
    if (!isDriven) markDead(device);
    if (!isTidy) device->hasRemovedProcs = true;
    if (hasNewState) {
        postChange(device->id, kAudioDevicePropertyDeviceIsRunning);
        postChange(device->id, kAudioDevicePropertyDeviceIsRunningSomewhere);
    }
    return isTidy;
}

bool tidyAll()
{
    bool isTidy = true;
    for (const DeviceRef& device : devicesForProcs()) {
        isTidy = tidy(device) && isTidy;
        if (hasHardwareEnded(device)) markDead(device);
    }
    return isTidy;
}

void run()
{
    // Without memory tidyAll() fails. The loop then frees and checks again, but the failed change is lost.
    for (bool isTidy = true;; isTidy = withinBorder(false, tidyAll)) {
        if (!isTidy)
            housekeeperSignal().waitFor(retryNanos);
        else if (isAnyHardwareOpen())
            housekeeperSignal().waitFor(watchNanos);
        else
            housekeeperSignal().wait();
    }
}

/// At the end of the process, close the hardware of stopped devices after their last frame.
void closeStoppedHardware()
{
    for (const DeviceRef& device : devicesForProcs()) {
        const std::lock_guard<std::mutex> control(device->control);
        if (!device->isRunning()) (void)settleDriver(device);
    }
    leaveHardware();
}

} // namespace

void startHousekeeper()
{
    std::thread(run).detach();
    callAtServerEnd(wake);
    std::atexit(closeStoppedHardware);
}

} // namespace kvxplatform::hal
