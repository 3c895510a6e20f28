// What else changes with a setting of a device, and who is told.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Whether any property would tell one from the other.
bool differ(const Settings& before, const Settings& after);

/// Where a change of one side of a device is told: of the whole, unless the device has another side.
AudioObjectPropertyScope placeOfSide(const Device& device, bool isInput);

// Telling the listeners of the device and of its streams. [any, but not in a cycle; the tree's lock not held]

/// Each property that has another value than before, once.
void tellChanges(const Device& device, const Settings& before, const Settings& after);

/// The rate, or the slice, and what follows from it alone.
void tellNewRate(const Device& device);
void tellNewSlice(const Device& device);

} // namespace kvxplatform::hal
