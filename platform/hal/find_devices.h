// Finds the devices of this machine: at the first use of the device list, and when a program refreshes it.
#pragma once

#include "platform/hal/device_list.h"

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// List a device and notify the listeners of the list.
void addDevice(const DeviceRef& device);

/// Make the device that a user names the default and system output.
/// Errors   False, with the reason in `error`.
bool chooseOutput(const std::string& choice, std::string& error);

/// Read PortAudio's devices again: list new ones, unplug missing ones; a dead one that is found again is
/// listed as a new device.
/// Errors   False, with the reason in `error`; the list is unchanged.
bool refreshHardware(std::string& error);

/// Why PortAudio's devices could not be read; empty if they could.
std::string hardwareError();

DeviceRef builtInSimulatedDevice();

} // namespace kvxplatform::hal
