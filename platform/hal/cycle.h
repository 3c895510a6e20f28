// One slice of a device's time.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Take up the settings that were published, if there are new ones.
/// Thread  whoever turns the device, with its turnLock held, before each cycle.
const Settings& takeUpSettings(Device& device);

/// Call every started procedure with a zeroed slice of its own, add them up, apply the levels, and hand the
/// sum to the tap and the capture. A single procedure's samples pass as they are.
/// Shape   `frames` at most the slice taken up; the result is interleaved, valid until the next cycle.
/// Thread  whoever turns the device, with its turnLock held. Allocates nothing, and takes no lock.
const float* turnCycle(Device& device, UInt32 frames, bool mayWait);

/// Free what cycles have done with. Not in a cycle.
void freeSpentShapes(Device& device);

} // namespace kvxplatform::hal
