// Devices that PortAudio knows: found, opened, turned by its callback, and watched.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Every output device of PortAudio, as it is now; those that are being played are not looked at anew.
/// Starts PortAudio at the first call. Empty, with the reason in `error`, if it does not start.
std::vector<DeviceRef> readHardware(std::string& error);

/// Whether a stream can be opened on it: what decides the default device.
bool canOpen(const Device& device);

/// The rates that the hardware takes, asked once: it may open the device for each.
std::vector<double> findRates(const Device& device);

/// Open and start the stream of a device, if it is not. `control` held by the caller.
OSStatus openHardware(const DeviceRef& device);
void closeHardware(const DeviceRef& device);

/// Running hardware stopped asking for slices. [housekeeper]
bool hasHardwareEnded(Device& device);
bool isAnyHardwareOpen();

/// At the end of the process: let PortAudio go, unless a stream is open or does not answer. A sound server
/// then does not have to find out by itself that its client is gone.
void leaveHardware();

} // namespace kvxplatform::hal
