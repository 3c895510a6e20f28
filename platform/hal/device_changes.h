// What else changes with a setting of a device, and who is told.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Tell the listeners of the device and of its streams. [any, but not in a cycle; the tree's lock not held]
void tellNewRate(const Device& device);
void tellNewSlice(const Device& device);
void tellNewChannels(const Device& device);

} // namespace kvxplatform::hal
