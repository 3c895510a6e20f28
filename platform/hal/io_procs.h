// Which procedures a device calls. The public functions are AudioDeviceAddIOProc and its family.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Free the records of removed procedures. Not in a cycle. Takes cycleLock.
void sweepRemoved(Device& device);

/// Bring the driver in line with what is started: hardware opened or closed, the timer's thread there. Takes
/// `control` from its caller; not in a cycle.
OSStatus settleDriver(const DeviceRef& device);

/// Say that a device has died or been unplugged: from now on the timer turns it, and nothing is heard. Not in
/// a cycle.
void beginDiscarding(const DeviceRef& device);

/// With cycleLock held: note whether anything is started, for 'goin' and the housekeeper.
void noteRunning(Device& device);

} // namespace kvxplatform::hal
