// Runs the cycles of stepped devices on the calling thread as fast as possible, for tests and offline
// renders.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

// These functions do nothing inside an I/O cycle.
// All functions: [any].

/// Run `frames` frames of a stepped device: whole slices, then the remaining frames.
/// Returns  the number of frames that ran, which is less than `frames` if the last procedure stopped earlier.
UInt32 stepDevice(Device& device, UInt32 frames);

/// Advance every running stepped device by `seconds`; a fraction of a frame is carried over to the next call.
/// Returns  true if a device advanced and no clock paces a running device, so that the caller need not sleep.
bool advanceSteppedDevices(double seconds);

} // namespace kvxplatform::hal
