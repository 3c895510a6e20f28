// Watches the devices through listeners of the library, and reports each change.
#pragma once

#include "host/kvx/devices/device_facts.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kvx {

/// Listens to the system and to every device. After an event the watch reads the changed object again and
/// reports each difference as a line; a change that is undone before this read is not reported. New devices
/// get listeners, and the listeners of removed devices are released.
/// All functions: [main].
class Watch {
public:
    using Report = std::function<void(const std::string& line)>;

    /// Begin to watch. Changes are reported in reportChanges() only.
    /// Errors  throws Failure.
    Watch(host::Host& host, const CoreAudio& core, Report report);
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// Wait up to `seconds` for events, and report the changes.
    /// Returns  whether there was a change.
    bool reportChanges(double seconds);

    /// The known state of the devices, in the order of the list.
    std::vector<DeviceFacts> devices() const;
    const Roles& roles() const { return roles_; }

    /// The number of listeners.
    std::size_t listenerCount() const;

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
    std::set<ObjectID> changed_; ///< objects with an event since the last reportChanges()
    std::vector<host::Object> systemListeners_;
    std::map<ObjectID, Watched> watched_; ///< devices by ID
    std::vector<ObjectID> order_;         ///< IDs of the devices in the order of the list
    Roles roles_;
};

} // namespace kvx
