// The capture that KVX_AUDIO_CAPTURE names: of the default output device, from its first start.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Read the variable; later changes of it have no effect.
/// [any], once
void readCaptureEnvironment();

/// Start the capture, unless it has started before or the device is not the default. Errors are written to
/// standard error.
/// [any], not inside a cycle
void startCaptureOfEnvironment(const DeviceRef& device);

} // namespace kvxplatform::hal
