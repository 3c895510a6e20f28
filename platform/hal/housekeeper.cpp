#include "platform/hal/housekeeper.h"

#include "platform/hal/device_changes.h"
#include "platform/hal/io_procs.h"
#include "platform/hal/listeners.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/signal.h"
#include "platform/hal/sound_server.h"
#include "platform/hal/tree.h"

#include <cstdlib>
#include <exception>
#include <thread>

namespace kvxplatform::hal {

namespace {

constexpr std::int64_t watchNanos = 100'000'000; // between two looks at running hardware
constexpr std::int64_t retryNanos = 5'000'000;   // until a cycle has surely done with what is to be freed

/// Lives as long as the process: threads may outlast main.
Signal& wakeUp()
{
    static Signal& signal = *new Signal;
    return signal;
}

void tellOfRunning(const Device& device)
{
    postChange(device.id, kAudioDevicePropertyDeviceIsRunning);
    postChange(device.id, kAudioDevicePropertyDeviceIsRunningSomewhere);
}

/// True if nothing is left to do.
bool tidy(const DeviceRef& device)
{
    if (device->mustApply.exchange(false) && applySettings(device) != noErr) {
        tellNewRate(*device); // whoever set it inside a cycle was told that it holds
        tellNewSlice(*device);
    }
    const bool hasNews = device->hasNewsOfRunning.exchange(false);
    const bool hasRemoved = device->hasRemovedProcs.exchange(false);
    if (!hasNews && !hasRemoved) return true;
    bool isTurned, isTidy;
    {
        const std::lock_guard<std::mutex> control(device->control);
        isTurned = settleDriver(device) == noErr;
        isTidy = device->procs.sweep();
        forgetIfUnused(device);
    }
    if (!isTurned)
        letDie(device); // started inside a cycle, and the hardware does not open: nobody to tell but so
    if (!isTidy) device->hasRemovedProcs = true;
    if (hasNews) tellOfRunning(*device);
    return isTidy;
}

void run()
{
    for (bool isTidy = true;;) {
        if (!isTidy)
            wakeUp().waitFor(retryNanos);
        else if (isAnyHardwareOpen())
            wakeUp().waitFor(watchNanos);
        else
            wakeUp().wait();
        try {
            isTidy = true;
            for (const DeviceRef& device : devicesForProcs()) {
                isTidy = tidy(device) && isTidy;
                if (hasHardwareEnded(device)) letDie(device);
            }
        } catch (const std::exception&) {
            isTidy = false; // no memory: it is tried again
        }
    }
}

/// What a stopped device was given is heard to its end, also when the process ends right after the stop; and
/// a sound server does not have to find out that its client has gone.
void closeStoppedHardware()
{
    for (const DeviceRef& device : devicesForProcs()) {
        const std::lock_guard<std::mutex> control(device->control);
        if (!device->isRunning()) (void)settleDriver(device);
    }
    leaveHardware();
}

} // namespace

void wakeHousekeeper() { wakeUp().raise(); }

void startHousekeeper()
{
    std::thread(run).detach(); // for the life of the process
    callAtServerEnd(wakeHousekeeper);
    std::atexit(closeStoppedHardware);
}

} // namespace kvxplatform::hal
