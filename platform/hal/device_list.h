// The list of devices and streams by ID, and the default devices. A process never uses an ID twice.
#pragma once

#include "platform/hal/device.h"

#include <array>

namespace kvxplatform::hal {

/// The uses for which the system has a default device.
enum class Role { output, systemOutput, input };
constexpr std::size_t roleCount = 3;

struct StreamRef {
    DeviceRef device; ///< the stream's device; null if there is no such stream
    bool isInput = false;
};

/// Selectors of the properties of the system object that a change of the device list changes.
using Selectors = std::vector<AudioObjectPropertySelector>;

/// All functions: [any], with propertyLock.
class DeviceList {
public:
    enum class Change { none, done, refused };

    /// Give a new device its IDs and append it to the list.
    void add(const DeviceRef& device);
    /// Remove a device from the list. The device is kept for its procedures until forget().
    void unplug(const DeviceRef& device);
    void forget(const DeviceRef& device);

    const std::vector<DeviceRef>& listed() const { return listed_; }
    std::vector<AudioObjectID> ids() const;
    DeviceRef find(AudioObjectID id) const; ///< the listed device with this ID, or null
    DeviceRef findUnplugged(AudioObjectID id) const;
    StreamRef findStream(AudioObjectID id) const;
    /// All devices, listed and unplugged.
    std::vector<DeviceRef> all() const;

    AudioObjectID inRole(Role role) const { return roles_[static_cast<std::size_t>(role)]; }
    /// Give a role to a listed device. The change is refused if the device is dead or has no channels on the
    /// role's side.
    Change setInRole(Role role, AudioObjectID id);
    /// Find a new device for each role whose device is dead, unplugged or without channels on the role's
    /// side: the first suitable hardware device, else a simulated device. Returns the changed properties.
    Selectors moveRoles();

private:
    bool canHave(Role role, const Device& device) const;

    std::vector<DeviceRef> listed_, unplugged_;
    AudioObjectID nextID_ = kAudioObjectSystemObject + 1;
    std::array<AudioObjectID, roleCount> roles_ = {};
};

/// The selector of the system object's property that names the device in a role.
AudioObjectPropertySelector selectorOf(Role role);

// ---- the device list of this process ----

/// The device list. The first call finds the devices and starts the housekeeper thread, so the caller of the
/// first call must not hold propertyLock.
/// [any]
DeviceList& deviceList();

/// The two steps of the first deviceList() call, implemented in find_devices.cpp and housekeeper.cpp.
void findDevices(DeviceList& list);
void startHousekeeper();

// Look-ups that lock propertyLock. All functions: [any].

DeviceRef findDevice(AudioObjectID id); ///< the listed device with this ID, or null
/// Find a listed device, or an unplugged device whose last procedure is not removed yet.
DeviceRef findDeviceForProcs(AudioObjectID id);
StreamRef findStream(AudioObjectID id);
std::vector<DeviceRef> listedDevices();
/// All listed devices, and the unplugged devices whose cycles still run.
std::vector<DeviceRef> devicesForProcs();

} // namespace kvxplatform::hal
