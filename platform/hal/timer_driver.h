// The timer thread, which runs a device's cycles by the host clock, for paced simulated devices and for dead
// or unplugged devices.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Start the timer thread of a device, unless the device has one. The thread waits while the device is
/// stopped. Its deadlines are counted from the start, so they never drift, and late slices are made up for.
/// The caller holds the device's `control` mutex.
/// Errors   'what' if no thread can be started; the next call tries again.
/// Not inside an I/O cycle.
/// [any]
OSStatus ensureTimerThread(const DeviceRef& device);

} // namespace kvxplatform::hal
