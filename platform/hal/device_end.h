// The end of a device: unplugged, dead, or freed after its last procedure is removed.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

// unplug() and markDead() are not called inside an I/O cycle. They give the device's roles (default device)
// to other devices, notify listeners, finish the device's captures, and discard its later output. Both:
// [any].

/// Remove a device from the device list. The device is dead afterwards.
void unplug(const DeviceRef& device);

/// Mark a device that no longer works as dead, but keep it in the device list.
void markDead(const DeviceRef& device);

/// Release an unplugged device if it has no procedures. The caller holds the device's `control` mutex.
/// [any]
void forgetIfUnused(const DeviceRef& device);

} // namespace kvxplatform::hal
