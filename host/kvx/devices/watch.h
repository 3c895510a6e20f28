// Watches the audio devices through property listeners of the library, and reports each change.
#pragma once

#include "host/kvx/devices/device_facts.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kvx {

/// Adds listeners to the system and to each device, also to devices that appear later. After an event the
/// watch reads the changed object again, and reports each difference as a line. A change that was undone
/// before this read is not reported.
// All functions: [main].
class Watch {
public:
    using Report = std::function<void(const std::string& line)>;

    /// Begin to watch the devices. Only reportChanges() calls `report`.
    /// Errors  throws Failure.
    Watch(host::Host& host, const CoreAudio& core, Report report);
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// Wait up to `seconds` for events, and report the changes of the devices.
    /// Returns  whether a change was reported.
    bool reportChanges(double seconds);

    /// The state of the devices when they were last read, in the order of the device list.
    std::vector<DeviceFacts> devices() const;
    const Roles& roles() const { return roles_; }

private:
    struct Watched {
        DeviceFacts facts;
        std::vector<host::Object> listeners;
    };

    void report(const std::string& line);
    host::Object listen(ObjectID object, const char* selectorName);
    void beginWatching(ObjectID device);
    std::string nameOf(ObjectID device) const;
    void updateList();
    void updateRoles();
    void updateDevice(ObjectID device);

    host::Host& host_;
    const CoreAudio& core_;
    Report report_;
    std::size_t reportCount_ = 0;
    std::set<ObjectID> changed_; ///< IDs of the objects with an event since the last reportChanges()
    std::vector<host::Object> systemListeners_;
    std::map<ObjectID, Watched> watched_; ///< watched devices by ID
    std::vector<ObjectID> order_;         ///< IDs of the watched devices, in the order of the device list
    Roles roles_;
};

} // namespace kvx
