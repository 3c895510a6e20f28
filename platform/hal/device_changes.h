// Notifies the listeners of every property that changes its value with a device's settings.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Whether the change from `before` to `after` changes any property.
bool differ(const Settings& before, const Settings& after);

/// The scope in which a change of one side is notified: that side if the device has inputs and outputs, else
/// the global scope.
AudioObjectPropertyScope scopeOfSide(const Device& device, bool isInput);

// The three post functions notify the listeners of the device and of its streams, once for each property.
// They are not called inside an I/O cycle or with propertyLock held.
// These functions: [any].

void postSettingChanges(const Device& device, const Settings& before, const Settings& after);

/// Notify listeners of a change of the rate alone (postNewRate) or of the slice alone (postNewSlice).
void postNewRate(const Device& device);
void postNewSlice(const Device& device);

} // namespace kvxplatform::hal
