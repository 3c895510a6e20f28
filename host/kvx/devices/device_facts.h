// Reads the audio devices and their properties through the library.
// All functions: [main].
#pragma once

#include "host/kvx/library/core_audio.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kvx {

/// The properties of one device. Texts are UTF-8, but may contain invalid bytes. A property that the device
/// does not have is 0 or empty.
struct DeviceFacts {
    ObjectID id = 0;
    std::string name, maker, uid;
    std::string system; ///< "JACK", "ALSA", "simulated"; the platform reports it, not the library
    std::uint32_t inputs = 0, outputs = 0; ///< numbers of channels
    double rate = 0;                       ///< nominal sample rate, Hz
    std::vector<ValueRange> rates;         ///< available sample rates, Hz
    std::uint32_t slice = 0;               ///< slice size, frames
    std::uint32_t latency = 0; ///< latency of the output, or of the input if there is no output, frames
    bool isAlive = false;
    bool isRunning = false;
    std::map<std::uint32_t, float> volumes; ///< volume controls by output channel; key 0: all channels
    std::map<std::uint32_t, bool> mutes;    ///< mute controls by output channel; key 0: all channels
};

/// The IDs of the devices that the system uses for output, for alert sounds and for input; 0: no device.
struct Roles {
    ObjectID output = 0, systemOutput = 0, input = 0;
};

/// Read the IDs of the devices, in the order of the system's device list.
/// Errors  throws Failure.
std::vector<ObjectID> readDeviceList(const CoreAudio& core);

/// Read the properties of a device.
/// Errors  nullopt if there is no such device.
std::optional<DeviceFacts> readDeviceFacts(const CoreAudio& core, ObjectID device);

/// Read the properties of all devices, in the order of the system's device list.
/// Errors  throws Failure if no device can be read; a simulated device is always in the list.
std::vector<DeviceFacts> readAllDevices(const CoreAudio& core);

Roles readRoles(const CoreAudio& core);

} // namespace kvx
