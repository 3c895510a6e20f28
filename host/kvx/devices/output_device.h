// Lists the audio devices, chooses and sets up the output device of this process, and lets that device play.
// All functions: [main].
#pragma once

#include "host/kvx/text/failure.h"

#include <KVXPlatform/KVXPlatform.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kvx {

constexpr double lowestRate = 1000, highestRate = 768000; // limits of a simulated device's sample rate, Hz
constexpr std::uint64_t longestStep = 4096; // largest number of device frames per call of passTime()

/// The output device that the user requests, and its settings.
struct DeviceRequest {
    std::string
        choice; ///< name, part of a name or row number of a device, or "simulated"; empty: the default device
    double rate = 0;        ///< new sample rate of the simulated device, Hz; 0: unchanged
    bool isStepped = false; ///< true: run the simulated device faster than real time
};

/// Check the status of a control function of the platform.
/// Errors  throws Failure with the platform's error text if the status is not 0.
void checkControl(std::int32_t status);

/// Check that the platform could read the sound hardware. If not, the device list is incomplete.
/// Errors  throws Failure, for example if a sound server does not answer.
void checkHardware();

/// List all devices. The index of a device in the result is the row number that `kvx devices` shows.
std::vector<KVXDeviceInfo> listDevices();

/// Find the devices with this row number, name, part of a name or UID, by the rules of
/// KVXPlatformFindDevices().
std::vector<KVXDeviceInfo> findDevices(const std::string& text);

/// Use simulated devices only, and leave the sound hardware closed. Has an effect only before the first call
/// of any other platform function.
void useSimulatedDevicesOnly();

/// Make the requested device the default output device, and apply the requested settings.
/// Returns  the device with these settings.
/// Errors  throws Failure.
KVXDeviceInfo chooseDevice(const DeviceRequest& request);

/// Whether the simulated device plays only because no hardware device opens.
bool isFallback(const KVXDeviceInfo& device, const DeviceRequest& request);

/// Read the present state of a device. A device that is no longer in the list is returned as not alive.
KVXDeviceInfo deviceNow(const KVXDeviceInfo& device);

/// Let a device play, and run the tasks of the main queue. A stepped device runs `frames` frames (1 to
/// longestStep). For any other device, the call waits for half the duration of `frames`, from 1 to 20 ms.
void passTime(const KVXDeviceInfo& device, bool isStepped, std::uint64_t frames = longestStep);

/// Describe the error that the device died during playback.
Failure deviceDied(const KVXDeviceInfo& device);

/// Format one line that names the device, or explains to the user why the simulated device plays.
std::string formatDevice(const KVXDeviceInfo& device, const DeviceRequest& request);

} // namespace kvx
