// A device's capture: begun and ended while it plays.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Write what the device plays from now on. False, with the reason in `error`, if the file cannot be written.
/// An earlier capture has been finished before. Not in a cycle.
bool startCapture(Device& device, const std::string& path, double rate, UInt32 channels, std::string& error);

/// Finish the file, if there is one: all that was played is in it. False, with the reason in `error`, if
/// anything is not. Not in a cycle.
bool finishCapture(Device& device, std::string& error);

} // namespace kvxplatform::hal
