// Devices, watched: listeners of the library on the system and on every device, and what they lead to.
#pragma once

#include "host/kvx/devices/device_facts.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kvx {

/// An event says that something of an object changed. The object is then looked at again, and each difference
/// is a line; changes that are undone before the look are not seen. New devices get listeners, those that
/// went lose theirs.
///
/// Thread  [main]
class Watch {
public:
    using Say = std::function<void(const std::string& line)>;

    /// Watches from here on; says nothing yet. Throws Failure where the system cannot be watched.
    Watch(host::Host& host, const CoreAudio& core, Say say);
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// Wait up to `seconds` for events, take what came, and say what they mean. Whether anything was said.
    bool turn(double seconds);

    /// The state that is known, in the order of the list.
    std::vector<DeviceFacts> devices() const;
    const Roles& roles() const { return roles_; }

    /// Listeners alive, for tests.
    std::size_t listenerCount() const;

private:
    struct Watched {
        DeviceFacts facts;
        std::vector<host::Object> listeners;
    };

    void tell(const std::string& line);
    host::Object listen(ObjectID object, const char* selectorName);
    void beginWatching(ObjectID device);
    std::string nameOf(ObjectID device) const;
    void lookAtList();
    void lookAtRoles();
    void lookAtDevice(ObjectID device);

    host::Host& host_;
    const CoreAudio& core_;
    Say say_;
    std::size_t said_ = 0;
    std::set<ObjectID> changed_; ///< noted by the events, looked at by turn()
    std::vector<host::Object> systemListeners_;
    std::map<ObjectID, Watched> watched_;
    std::vector<ObjectID> order_;
    Roles roles_;
};

} // namespace kvx
