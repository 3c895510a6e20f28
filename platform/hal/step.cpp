#include "platform/hal/step.h"

#include "platform/hal/cycle.h"
#include "platform/hal/tree.h"

#include <algorithm>

namespace kvxplatform::hal {

UInt32 stepDevice(Device& device, UInt32 frames)
{
    UInt32 done = 0;
    while (done < frames) {
        const std::lock_guard<std::mutex> lock(
            device.cycleLock); // let go between slices: others may want a word
        if (device.driver != Driver::steps || !device.isRunning) break;
        const UInt32 slice = std::min(frames - done, device.running.sliceFrames);
        turnCycle(device, slice, true);
        done += slice;
    }
    return done;
}

bool advanceSteppedDevices(double seconds)
{
    bool isAnyStepped = false, isAnyPaced = false;
    for (const DeviceRef& device : devicesForProcs()) {
        if (!device->isRunning) continue;
        UInt32 due = 0;
        {
            const std::lock_guard<std::mutex> lock(device->cycleLock);
            if (device->driver != Driver::steps) {
                isAnyPaced = true;
                continue;
            }
            device->stepDebt += seconds * device->running.rate;
            due = static_cast<UInt32>(device->stepDebt);
            device->stepDebt -= due;
        }
        isAnyStepped = true;
        stepDevice(*device, due);
    }
    return isAnyStepped && !isAnyPaced;
}

} // namespace kvxplatform::hal
