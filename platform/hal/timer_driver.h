// Turns a device by the host clock: the simulated device's own pace, and the end of every dead one.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// See that the device has its timer thread. It rests while nothing is started, keeps deadlines of its own
/// start, so that it never drifts, and makes up for slices that came late. `control` held by the caller.
/// 'what' if the machine has no thread to spare; the next call tries again.
OSStatus ensureTimerThread(const DeviceRef& device);

} // namespace kvxplatform::hal
