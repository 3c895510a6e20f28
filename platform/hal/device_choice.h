// Finds the devices that a user has named.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Find the device with the row number `text` in the list; or else the devices whose name or UID is `text`;
/// or else the devices whose name is `text` in upper or lower case; or else the devices whose name contains
/// `text` in upper or lower case. None for "".
/// [any]
std::vector<DeviceRef> devicesFitting(const std::vector<DeviceRef>& devices, const std::string& text);

/// Find the output device that `choice` names: "simulated" (`builtIn`), a row number of the device list, a
/// device name, a UID, or a part of exactly one device name, in upper or lower case.
/// Errors   Null, with the reason and the valid choices in `error`.
/// [any]
DeviceRef findOutputByChoice(const std::vector<DeviceRef>& devices, const DeviceRef& builtIn,
                             const std::string& choice, std::string& error);

} // namespace kvxplatform::hal
