// A device's capture: begun and ended while it plays.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Write what the device plays from now on. False, with the reason in `error`, if the file cannot be written.
/// An earlier one of the same wish has been finished before. Not in a cycle.
bool startCapture(Device& device, CaptureWish wish, const std::string& path, const Settings& settings,
                  std::string& error);

/// Finish the file, if there is one: all that was played is in it. False, with the reason in `error`, if
/// anything is not. Not in a cycle.
bool finishCapture(Device& device, CaptureWish wish, std::string& error);

/// Finish all of them: the device or the process ends. What is amiss with the environment's goes to standard
/// error. Not in a cycle.
void finishCaptures(Device& device);

} // namespace kvxplatform::hal
