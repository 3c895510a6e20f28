// Runs the cycles of stepped devices on the calling thread, as fast as it can: for tests and offline renders.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

// Both functions: [any]; inside a cycle they do nothing.

/// Run a stepped device for `frames` device frames: whole slices, then the rest.
/// Returns  the frames that ran; fewer when the last procedure stopped before.
UInt32 stepDevice(Device& device, UInt32 frames);

/// Advance every running stepped device by `seconds`; a fraction of a frame is carried to the next call.
/// Returns  true if a device advanced and no running device is paced by a clock: the caller need not sleep.
bool advanceSteppedDevices(double seconds);

} // namespace kvxplatform::hal
