#include "platform/hal/step.h"

#include "platform/hal/cycle.h"
#include "platform/hal/device_list.h"

#include <algorithm>

namespace kvxplatform::hal {

namespace {

/// Run one cycle of at most `frames` frames. Returns the frames of the cycle, or 0 if the device has no cycle
/// to run.
UInt32 stepOnce(Device& device, UInt32 frames)
{
    const CycleScope scope(device);
    if (device.driver != Driver::steps || !device.isRunning()) return 0;
    CycleBuffers& buffers = buffersOfNextCycle(device);
    const UInt32 slice = std::min(frames, buffers.settings.sliceFrames);
    runCycle(device, buffers, slice, true);
    return slice;
}

} // namespace

UInt32 stepDevice(Device& device, UInt32 frames)
{
    if (deviceInCycle) return 0;
    UInt32 done = 0;
    while (done < frames) {
        const UInt32 slice = stepOnce(device, frames - done);
        if (slice == 0) break;
        done += slice;
    }
    return done;
}

bool advanceSteppedDevices(double seconds)
{
    if (deviceInCycle) return false;
    bool isAnyStepped = false, isAnyPaced = false;
    for (const DeviceRef& device : devicesForProcs()) {
        if (!device->isRunning()) continue;
        UInt32 due = 0;
        {
            const CycleScope scope(*device);
            if (device->driver != Driver::steps) {
                isAnyPaced = true;
                continue;
            }
            device->stepDebt += seconds * buffersOfNextCycle(*device).settings.rate;
            due = static_cast<UInt32>(device->stepDebt);
            device->stepDebt -= due;
        }
        isAnyStepped = true;
        stepDevice(*device, due);
    }
    return isAnyStepped && !isAnyPaced;
}

} // namespace kvxplatform::hal
