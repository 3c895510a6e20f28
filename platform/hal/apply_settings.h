// Applies the settings and the levels that a device's properties report to the device's I/O cycles.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Run the next I/O cycle with the device's present settings. If the caller is inside a cycle, the
/// housekeeper thread applies the settings soon after this call.
/// Errors   '!dat' if the hardware does not open with a new rate or slice: the former settings are restored.
///          'what' if the hardware does not open with the former settings either: the device is dead.
/// [any]
OSStatus applySettings(const DeviceRef& device);

/// Let the gain of each output channel glide to the device's present level.
/// [any]
void applyLevels(const DeviceRef& device);

} // namespace kvxplatform::hal
