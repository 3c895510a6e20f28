// The device that is played to: the process's default output device, as the user chose it.
#pragma once

#include "host/kvx/text/failure.h"

#include <CLI/CLI.hpp>
#include <KVXPlatform/KVXPlatform.h>

#include <string>
#include <vector>

namespace kvx {

/// Throws Failure when the sound hardware could not be read, so that the list lacks it: a sound server does
/// not answer, say.
void checkHardware();

/// Every device, in the order of their numbers (0 is the first).
std::vector<KVXDeviceInfo> listDevices();

struct DeviceWish {
    std::string choice;     ///< a name, a part of one, a number or "simulated"; empty: as the system has it
    double rate = 0;        ///< Hz, of the simulated device; 0: as it is
    bool isStepped = false; ///< turn the simulated device by hand instead of in real time
};

constexpr double lowestRate = 1000, highestRate = 768000; // of a simulated device, Hz

/// `--device`, `--device-rate` and `--fast`, for every command that is heard.
void addDeviceOptions(CLI::App& command, DeviceWish& wish);

/// Leave the machine's sound hardware alone: the simulated device is all there is. Before anything else is
/// asked of the platform.
void doWithoutHardware();

/// Make the wished device the default and set it up. Throws Failure: what cannot be had, and what to do.
KVXDeviceInfo chooseDevice(const DeviceWish& wish);

/// The device as it is now; one that is no longer listed comes back as not alive.
KVXDeviceInfo deviceNow(const KVXDeviceInfo& device);

constexpr std::uint64_t longestStep = 4096; // device frames

/// Let time pass and handle events: run up to `frames` frames of a stepped device, at least one; wait for
/// about half of them, at most 20 ms, on a device that runs by itself.
void passTime(const KVXDeviceInfo& device, bool isStepped, std::uint64_t frames = longestStep);

/// For a device that is no longer alive while it plays.
Failure wentAway(const KVXDeviceInfo& device);

/// What is played to, and why, in a line for the user.
std::string printDevice(const KVXDeviceInfo& device, const DeviceWish& wish);

} // namespace kvx
