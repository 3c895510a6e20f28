// Sets the tap and the captures of a device while the device plays.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// Set the tap of a device, or remove the tap (null). The former tap is not called after the return.
void setTap(Device& device, KVXOutputTap tap, void* context);

/// Capture the device's output from the next cycle on. The owner's previous capture must be finished.
/// Errors   False, with the reason in `error`, if the file cannot be created.
bool startCapture(Device& device, CaptureOwner owner, const std::string& path, const Settings& settings,
                  std::string& error);

/// Finish the owner's capture, if there is one. When finishCapture() returns, the file has all output.
/// Errors   False, with the reason in `error`, if the file is incomplete.
bool finishCapture(Device& device, CaptureOwner owner, std::string& error);

/// Finish all captures of a device, when the device or the process ends. Errors of the capture that
/// KVX_AUDIO_CAPTURE requested are written to standard error.
void finishCaptures(Device& device);

} // namespace kvxplatform::hal
