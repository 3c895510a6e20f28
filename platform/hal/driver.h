// Which driver runs the cycles of a device: hardware, the timer or step calls.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// Open or close the hardware, or start the timer thread, as the device's starts require. The caller holds
/// `control`.
OSStatus settleDriver(const DeviceRef& device);

/// Hand the device to another driver. The caller holds `control`; the former driver's last cycle may still
/// run until `device->scope.wait()` returns.
void handOver(const DeviceRef& device, Driver driver);

/// From now on the timer runs the cycles of a dead or unplugged device and discards their output.
void beginDiscarding(const DeviceRef& device);

} // namespace kvxplatform::hal
