// Devices that PortAudio knows: found, opened, turned by its callback, and watched.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Every output device of PortAudio. Of equal names, the second has ":2" behind its UID, and so on.
/// Starts PortAudio. Empty, with the reason in `error`, if it does not start.
std::vector<DeviceRef> readHardware(std::string& error);

/// The same, as they are now: PortAudio is started anew for it. Empty, with the reason in `error`, while a
/// stream is open, or once one or the sound server has ended.
std::vector<DeviceRef> readHardwareAnew(std::string& error);

/// Whether a stream can be opened on it: what decides the default device.
bool canOpen(const Device& device, const Settings& settings);

/// The rates that the hardware takes, asked once: it may open the device for each. Takes the tree's lock.
std::vector<double> findRates(const Device& device);

/// Open and start the stream of a device, if it is not. `control` held by the caller.
OSStatus openHardware(const DeviceRef& device);
void closeHardware(const DeviceRef& device);

/// Running hardware stopped asking for slices, or has no stream and none can be opened; or its sound server
/// ended. [housekeeper]
bool hasHardwareEnded(const DeviceRef& device);
bool isAnyHardwareOpen();

/// At the end of the process: let PortAudio go, unless a stream is open or ended, or the sound server did. A
/// living sound server then does not have to find out by itself that its client is gone.
void leaveHardware();

} // namespace kvxplatform::hal
