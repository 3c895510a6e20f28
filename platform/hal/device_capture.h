// Sets the tap and the captures of a device while it plays.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// Set the tap of a device, or none (null). The former one is no longer called when this returns.
void setTap(Device& device, KVXOutputTap tap, void* context);

/// Capture the output from the next cycle on. The owner has finished its former capture.
/// Errors   False, with the reason in `error`, if the file cannot be created.
bool startCapture(Device& device, CaptureOwner owner, const std::string& path, const Settings& settings,
                  std::string& error);

/// Finish the owner's capture, if there is one: its file then has all output.
/// Errors   False, with the reason in `error`, if the file is incomplete.
bool finishCapture(Device& device, CaptureOwner owner, std::string& error);

/// Finish all captures of a device that ends, or at the end of the process. Errors of the environment's
/// capture are written to standard error.
void finishCaptures(Device& device);

} // namespace kvxplatform::hal
