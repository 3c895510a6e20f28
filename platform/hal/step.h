// Turns a device by hand: tests, and renders that need not be heard while they are made.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Turn a stepped device by `frames`: whole slices, then the rest. Stops when nothing is started any more.
/// Returns the frames turned. Not in a cycle.
UInt32 stepDevice(Device& device, UInt32 frames);

/// Let `seconds` pass for every stepped device that runs. True if there was one and no device runs by a
/// clock, so that nobody needs to wait. Fractions of a frame are owed to the next call.
bool advanceSteppedDevices(double seconds);

} // namespace kvxplatform::hal
