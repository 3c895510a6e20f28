// Simulated devices: no hardware, and cycles that the host clock or step calls run.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Make a simulated device that is not in the device list yet. A description field of 0 takes its default
/// value.
/// [any]
DeviceRef makeSimulatedDevice(const KVXSimulatedDevice& description);

/// Make a simulated microphone that delivers silence. The device is not in the device list yet.
/// [any]
DeviceRef makeSimulatedInput();

} // namespace kvxplatform::hal
