// Which procedures a device calls. The public functions are AudioDeviceAddIOProc and its family.
//
// Inside a cycle all of them only set marks, which hold at once; elsewhere, stopping and removing wait until
// the procedure's call that is under way has ended, with no lock held that it could want.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Bring the driver in line with what is started: hardware opened or closed, the timer's thread there.
/// `control` held by the caller; not in a cycle.
OSStatus settleDriver(const DeviceRef& device);

/// Have another driver turn the device. `control` held by the caller; not in a cycle.
void handOver(const DeviceRef& device, Driver driver);

/// Until the cycle that is under way has ended: after handing over, the former driver's last. No lock held.
void waitForTurn(Device& device);

/// Say that a device has died or been unplugged: from now on the timer turns it, and nothing is heard. Not in
/// a cycle.
void beginDiscarding(const DeviceRef& device);

} // namespace kvxplatform::hal
