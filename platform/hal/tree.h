// Every audio object by its ID. IDs are never used again within a process.
//
// All of it is guarded by one lock, which is held for look-ups and changes of plain values only: never while
// a procedure or a listener is called, nor while another lock is taken.
#pragma once

#include "platform/hal/device.h"

#include <CoreFoundation/CoreFoundation.h>

namespace kvxplatform::hal {

/// The tree's lock. The first use of any function here reads the environment and finds the devices.
std::mutex& treeLock();

/// A listed device, or null.
DeviceRef findDevice(AudioObjectID id);

/// Also one that is unplugged, until its last procedure has stopped.
DeviceRef findDeviceForProcs(AudioObjectID id);

struct StreamRef {
    DeviceRef device; ///< null: no such stream
    bool isInput = false;
};
StreamRef findStream(AudioObjectID id);

/// The listed devices in order, and with the unplugged ones that still turn.
std::vector<DeviceRef> listedDevices();
std::vector<DeviceRef> devicesForProcs();

/// The roles that one device has at a time.
enum class Role { output, systemOutput, input, count };
AudioObjectID deviceInRole(Role role);

/// What became of a wish: nothing needed to change, it was done, or it cannot be.
enum class Change { none, done, refused };

// For whoever holds the tree's lock: property getters and setters do.
std::vector<AudioObjectID> listedIDsLocked();
AudioObjectID deviceInRoleLocked(Role role);
AudioObjectID deviceOfUIDLocked(CFStringRef uid); ///< 0: none
/// Give a role to a listed device that can have it. Listeners are the caller's to tell.
Change setDeviceInRoleLocked(Role role, AudioObjectID id);

/// Enter a device: it gets its IDs, and listeners of the list are told.
DeviceRef enterDevice(const DeviceRef& device);

/// Take a device from the list; it is no longer alive, and its roles move on.
void unplug(const DeviceRef& device);

/// A device that no longer works stays in the list; its roles move on.
void letDie(const DeviceRef& device);

/// Let go of an unplugged device without procedures. `control` held by the caller.
void forgetIfUnused(const DeviceRef& device);

/// Choose the device of output and system output by what a user typed. False, with the reason in `error`.
bool chooseOutput(const std::string& choice, std::string& error);

/// Read PortAudio's list again: new devices are entered, those that went are unplugged, and one that died and
/// is there again is entered as another. False, with the reason in `error`, if the list stays as it is.
bool refreshHardware(std::string& error);

/// Why the devices of PortAudio could not be read; empty if they could.
std::string hardwareError();

DeviceRef builtInSimulatedDevice();

/// What the environment's KVX_AUDIO_CAPTURE asks for, at the first start of the default device.
void startCaptureOfEnvironment(const DeviceRef& device);

} // namespace kvxplatform::hal
