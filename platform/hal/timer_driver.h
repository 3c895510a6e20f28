// Runs the cycles of a device by the host clock: of paced simulated devices, and of dead ones.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Start the timer thread of a device, unless it has one. The thread waits while the device is stopped. Its
/// deadlines count from the start, so they never drift, and late slices are made up. The caller holds
/// `control`.
/// Errors   'what' without a thread; the next call tries again.
/// [any], not inside a cycle
OSStatus ensureTimerThread(const DeviceRef& device);

} // namespace kvxplatform::hal
