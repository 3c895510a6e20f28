// Devices without hardware, run by the host clock or by steps.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// A device that is not yet listed. A zero field of the description takes the default.
/// [any]
DeviceRef makeSimulatedDevice(const KVXSimulatedDevice& description);

/// A silent microphone that is not yet listed.
/// [any]
DeviceRef makeSimulatedInput();

} // namespace kvxplatform::hal
