// Selects the driver that runs a device's I/O cycles: hardware, the timer thread or step calls.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// Open or close the hardware, or start the timer thread, depending on whether the device is started. The
/// caller holds the device's `control` mutex.
OSStatus settleDriver(const DeviceRef& device);

/// Give the device to another driver. The caller holds the device's `control` mutex. The former driver's last
/// cycle may continue until `device->scope.wait()` returns.
void handOver(const DeviceRef& device, Driver driver);

/// Let the timer thread run the cycles of a dead or unplugged device and discard their output.
void beginDiscarding(const DeviceRef& device);

} // namespace kvxplatform::hal
