// Lists the devices; chooses and sets up the output device of the process, and lets the device play.
// All functions: [main].
#pragma once

#include "host/kvx/text/failure.h"

#include <KVXPlatform/KVXPlatform.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kvx {

constexpr double lowestRate = 1000, highestRate = 768000; // limits of a simulated device's rate, Hz
constexpr std::uint64_t longestStep = 4096;               // most device frames per call of passTime()

/// The output device that the user requests, and its settings.
struct DeviceRequest {
    std::string choice;     ///< a name, a part of a name, a row number or "simulated"; empty: no request
    double rate = 0;        ///< rate of the simulated device, Hz; 0: unchanged
    bool isStepped = false; ///< true: run the simulated device faster than real time
};

/// Check the status of a control function of the platform.
/// Errors  throws Failure with the platform's error text if the status is not 0.
void checkControl(std::int32_t status);

/// Check that the platform could read the sound hardware; the device list is incomplete otherwise.
/// Errors  throws Failure, for example if a sound server does not answer.
void checkHardware();

/// All devices. The index of a device is its row number.
std::vector<KVXDeviceInfo> listDevices();

/// The devices that a user names by a name, a part of a name or a UID, as KVXPlatformFindDevices() defines.
std::vector<KVXDeviceInfo> findDevices(const std::string& text);

/// Use simulated devices only, and leave the sound hardware closed. No effect after the first other call of
/// the platform.
void useSimulatedDevicesOnly();

/// Make the requested device the default output device, and set it up.
/// Errors  throws Failure.
KVXDeviceInfo chooseDevice(const DeviceRequest& request);

/// The present state of a device. A device that is no longer listed is not alive.
KVXDeviceInfo deviceNow(const KVXDeviceInfo& device);

/// Let the device play, and handle the events of the main queue. A stepped device runs `frames` frames, 1 to
/// longestStep; the call waits for about half of `frames`, at most 20 ms, on any other device.
void passTime(const KVXDeviceInfo& device, bool isStepped, std::uint64_t frames = longestStep);

/// The error for a device that died during playback.
Failure deviceDied(const KVXDeviceInfo& device);

/// One line for the user that names the device, or explains why the simulated device plays.
std::string formatDevice(const KVXDeviceInfo& device, const DeviceRequest& request);

} // namespace kvx
