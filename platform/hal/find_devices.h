// Finds the devices of this machine at the first use of the device list and when a program refreshes the
// list.
#pragma once

#include "platform/hal/device_list.h"

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// Add a device to the device list and notify the listeners of the list.
void addDevice(const DeviceRef& device);

/// Make the device that a user names the default output and the default system output.
/// Errors   False, with the reason in `error`.
bool chooseOutput(const std::string& choice, std::string& error);

/// Read PortAudio's devices again: list new devices and unplug missing ones. A dead device that PortAudio
/// finds again is listed as a new device.
/// Errors   False, with the reason in `error`; the device list is unchanged.
bool refreshHardware(std::string& error);

/// The reason why PortAudio's devices could not be read; empty after success.
std::string hardwareError();

DeviceRef builtInSimulatedDevice();

} // namespace kvxplatform::hal
