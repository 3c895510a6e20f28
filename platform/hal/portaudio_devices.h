// The output devices of PortAudio.
#pragma once

#include "platform/hal/device.h"

#include <portaudio.h>

namespace kvxplatform::hal {

// All functions: [any], not inside a cycle.

/// Start PortAudio and read its output devices. Of equal names, the second has ":2" after its UID.
/// Errors   Empty, with the reason in `error`.
std::vector<DeviceRef> readHardware(std::string& error);

/// Whether a stream can be opened.
bool canOpen(const Device& device, const Settings& settings);

/// The rates that the hardware supports; may open the device for each. Takes propertyLock.
std::vector<double> findRates(const Device& device);

/// Whether PortAudio can no longer be called for the device. Always false for simulated devices.
bool isOutOfReach(const Device& device);

/// How to open the device, by its UID in PortAudio's present list. False if it is missing. The caller holds
/// portAudioLock.
bool findParameters(const Device& device, UInt32 channels, PaStreamParameters& parameters);

} // namespace kvxplatform::hal
