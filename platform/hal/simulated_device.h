// Devices without hardware: made from a description, turned by the clock or by steps.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// A device as described, zero fields by default; not yet entered into the tree.
DeviceRef makeSimulatedDevice(const KVXSimulatedDevice& description);

/// The microphone that hears nothing.
DeviceRef makeSimulatedInput();

} // namespace kvxplatform::hal
