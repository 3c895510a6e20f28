// The output devices that PortAudio finds.
#pragma once

#include "platform/hal/device.h"

#include <portaudio.h>

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// Start PortAudio and read its output devices. If two devices have equal names, the UID of the second ends
/// with ":2".
/// Errors   An empty list, with the reason in `error`.
std::vector<DeviceRef> readHardware(std::string& error);

/// Whether PortAudio can open a stream on the device with these settings.
bool canOpen(const Device& device, const Settings& settings);

/// The sample rates that the hardware supports. May open the device once for each rate. Locks propertyLock.
std::vector<double> findRates(const Device& device);

/// Whether PortAudio can no longer be called for this device. False for every simulated device.
bool isOutOfReach(const Device& device);

/// Find the parameters with which PortAudio opens the device, by its UID in PortAudio's present device list.
/// Returns false if PortAudio no longer lists the device. The caller holds portAudioLock.
bool findParameters(const Device& device, UInt32 channels, PaStreamParameters& parameters);

} // namespace kvxplatform::hal
