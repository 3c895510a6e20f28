// Passes what the properties report on to the cycles.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Run the next cycle with the device's present settings. Inside a cycle the housekeeper does it soon after.
/// Errors   '!dat' if hardware does not open with a new rate or slice: the former ones are restored.
///          'what' if it does not open with those either: the device is dead.
/// [any]
OSStatus applySettings(const DeviceRef& device);

/// Let the gains glide to the device's present levels.
/// [any]
void applyLevels(const DeviceRef& device);

} // namespace kvxplatform::hal
