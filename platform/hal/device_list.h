// The devices and streams by their IDs, and the default devices. An ID is never used again in a process.
#pragma once

#include "platform/hal/device.h"

#include <array>

namespace kvxplatform::hal {

/// The uses for which the system has a default device.
enum class Role { output, systemOutput, input };
constexpr std::size_t roleCount = 3;

struct StreamRef {
    DeviceRef device; ///< null: no such stream
    bool isInput = false;
};

/// The properties of the system object that a change of the list changes.
using Selectors = std::vector<AudioObjectPropertySelector>;

/// All functions: [any], with propertyLock.
class DeviceList {
public:
    enum class Change { none, done, refused };

    /// Give a device its IDs and append it.
    void add(const DeviceRef& device);
    /// Unplugged devices are kept for their procedures until forget().
    void unplug(const DeviceRef& device);
    void forget(const DeviceRef& device);

    const std::vector<DeviceRef>& listed() const { return listed_; }
    std::vector<AudioObjectID> ids() const;
    DeviceRef find(AudioObjectID id) const; ///< listed; else null
    DeviceRef findUnplugged(AudioObjectID id) const;
    StreamRef findStream(AudioObjectID id) const;
    /// Listed and unplugged devices.
    std::vector<DeviceRef> all() const;

    AudioObjectID inRole(Role role) const { return roles_[static_cast<std::size_t>(role)]; }
    /// Give a role to a listed device; refused if it is dead or lacks that side.
    Change setInRole(Role role, AudioObjectID id);
    /// Pass the roles of devices that are dead, unplugged or lack that side to the first hardware that fits,
    /// else to a simulated device. Returns the changed properties.
    Selectors moveRoles();

private:
    bool canHave(Role role, const Device& device) const;

    std::vector<DeviceRef> listed_, unplugged_;
    AudioObjectID nextID_ = kAudioObjectSystemObject + 1;
    std::array<AudioObjectID, roleCount> roles_ = {};
};

/// The property of the system object that names the device in a role.
AudioObjectPropertySelector selectorOf(Role role);

// ---- the list of this process ----

/// The first call finds the devices and starts the housekeeper, so it must not hold propertyLock.
/// [any]
DeviceList& deviceList();

/// What the first call does; defined in the units above this one.
void findDevices(DeviceList& list);
void startHousekeeper();

// Look-ups that take propertyLock. All: [any].

DeviceRef findDevice(AudioObjectID id); ///< null: not listed
/// Also finds an unplugged device, until its last procedure is removed.
DeviceRef findDeviceForProcs(AudioObjectID id);
StreamRef findStream(AudioObjectID id);
std::vector<DeviceRef> listedDevices();
/// With the unplugged devices whose cycles still run.
std::vector<DeviceRef> devicesForProcs();

} // namespace kvxplatform::hal
