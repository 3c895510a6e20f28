// How a device ends: unplugged, dead, or forgotten after its last procedure.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

// unplug and markDead: [any], not inside a cycle. They pass the device's roles on, notify listeners, finish
// its captures and discard its further output.

/// Remove a device, dead from now on, from the list.
void unplug(const DeviceRef& device);

/// Keep a device that no longer works in the list.
void markDead(const DeviceRef& device);

/// Release an unplugged device without procedures. The caller holds `control`.
/// [any]
void forgetIfUnused(const DeviceRef& device);

} // namespace kvxplatform::hal
