// The capture to the file that KVX_AUDIO_CAPTURE names, from the first start of the default output device.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Read KVX_AUDIO_CAPTURE. Later changes of the variable have no effect.
/// Called once.
/// [any]
void readCaptureEnvironment();

/// Start the capture that KVX_AUDIO_CAPTURE requests, unless it has been started before or `device` is not
/// the default output device. Errors are written to standard error.
/// Not inside an I/O cycle.
/// [any]
void startCaptureOfEnvironment(const DeviceRef& device);

} // namespace kvxplatform::hal
