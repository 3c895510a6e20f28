#include "platform/hal/step.h"

#include "platform/hal/cycle.h"
#include "platform/hal/tree.h"

#include <algorithm>

namespace kvxplatform::hal {

namespace {

/// One cycle of at most `frames`; how many it were, 0 if there is nothing to turn.
UInt32 turn(Device& device, UInt32 frames)
{
    const std::lock_guard<std::mutex> lock(device.turnLock);
    if (device.driver != Driver::steps || !device.isRunning()) return 0;
    const UInt32 slice = std::min(frames, takeUpSettings(device).sliceFrames);
    turnCycle(device, slice, true);
    return slice;
}

} // namespace

UInt32 stepDevice(Device& device, UInt32 frames)
{
    if (turningDevice) return 0; // a cycle turns nothing
    UInt32 done = 0;
    while (done < frames) {
        const UInt32 slice = turn(device, frames - done);
        if (slice == 0) break;
        done += slice;
    }
    return done;
}

bool advanceSteppedDevices(double seconds)
{
    if (turningDevice) return false;
    bool isAnyStepped = false, isAnyPaced = false;
    for (const DeviceRef& device : devicesForProcs()) {
        if (!device->isRunning()) continue;
        UInt32 due = 0;
        {
            const std::lock_guard<std::mutex> lock(device->turnLock);
            if (device->driver != Driver::steps) {
                isAnyPaced = true;
                continue;
            }
            device->stepDebt += seconds * takeUpSettings(*device).rate;
            due = static_cast<UInt32>(device->stepDebt);
            device->stepDebt -= due;
        }
        isAnyStepped = true;
        stepDevice(*device, due);
    }
    return isAnyStepped && !isAnyPaced;
}

} // namespace kvxplatform::hal
