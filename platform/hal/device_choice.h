// The output device that a user names.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Find the device of "simulated" (`builtIn`), a number of the list, a name, a UID, or a part of exactly one
/// name in any case.
/// Errors   Null, with the reason and the valid choices in `error`.
/// [any]
DeviceRef findOutputByChoice(const std::vector<DeviceRef>& devices, const DeviceRef& builtIn,
                             const std::string& choice, std::string& error);

} // namespace kvxplatform::hal
