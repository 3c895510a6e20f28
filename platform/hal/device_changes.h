// Notifies listeners of all properties that a change of a device's settings changes.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Whether any property differs.
bool differ(const Settings& before, const Settings& after);

/// The scope of a change of one side: the global scope, unless the device has both sides.
AudioObjectPropertyScope scopeOfSide(const Device& device, bool isInput);

// The next three notify the listeners of the device and of its streams, once for each property.
// [any], not inside a cycle, without propertyLock

void postSettingChanges(const Device& device, const Settings& before, const Settings& after);

/// A change of the rate, or of the slice, alone.
void postNewRate(const Device& device);
void postNewSlice(const Device& device);

} // namespace kvxplatform::hal
