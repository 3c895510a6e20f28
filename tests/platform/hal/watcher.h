// A listener that keeps what it is told, in order, and on which thread.
#pragma once

#include "tests/platform/hal/bench.h"

#include <mutex>
#include <thread>
#include <utility>

namespace bench {

constexpr auto anySelector = kAudioObjectPropertySelectorWildcard;
constexpr auto anyScope = kAudioObjectPropertyScopeWildcard;
constexpr auto anyElement = kAudioObjectPropertyElementWildcard;

/// "volm outp 1"
inline std::string text(const AudioObjectPropertyAddress& at)
{
    return text(at.mSelector) + " " + text(at.mScope) + " " + std::to_string(at.mElement);
}

class Watcher {
public:
    explicit Watcher(AudioObjectID object,
                     const AudioObjectPropertyAddress& at = address(anySelector, anyScope, anyElement),
                     std::function<void()> body = {})
        : object_(object), at_(at), body_(std::move(body))
    {
        EXPECT_EQ(AudioObjectAddPropertyListener(object_, &at_, tell, this), noErr);
    }
    ~Watcher() { remove(); }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    /// Safe to call twice, and in its own call.
    OSStatus remove()
    {
        return isRemoved_.exchange(true) ? OSStatus{noErr}
                                         : AudioObjectRemovePropertyListener(object_, &at_, tell, this);
    }

    int count() const { return count_; }
    bool wasToldHere() const { return wasToldHere_; } ///< by the thread that made it

    std::vector<std::string> takeTold()
    {
        const std::lock_guard<std::mutex> hold(lock_);
        return std::exchange(told_, {});
    }

private:
    static OSStatus tell(AudioObjectID object, UInt32 count, const AudioObjectPropertyAddress* addresses,
                         void* client)
    {
        auto& self = *static_cast<Watcher*>(client);
        EXPECT_EQ(object, self.object_);
        EXPECT_EQ(count, 1u);
        {
            const std::lock_guard<std::mutex> hold(self.lock_);
            for (UInt32 i = 0; i < count; ++i) self.told_.push_back(text(addresses[i]));
        }
        if (std::this_thread::get_id() == self.maker_) self.wasToldHere_ = true;
        ++self.count_;
        if (self.body_) self.body_();
        return noErr;
    }

    const AudioObjectID object_;
    const AudioObjectPropertyAddress at_;
    const std::function<void()> body_;
    const std::thread::id maker_ = std::this_thread::get_id();
    std::atomic<bool> isRemoved_{false}, wasToldHere_{false};
    std::atomic<int> count_{0};
    std::mutex lock_;
    std::vector<std::string> told_;
};

/// Wait until all changes made so far have been told: there is one thread, and it keeps their order.
inline void waitUntilTold()
{
    const auto at = address(kAudioHardwarePropertySleepingIsAllowed);
    const auto value = get<UInt32>(kAudioObjectSystemObject, at);
    Watcher last(kAudioObjectSystemObject, at);
    for (UInt32 each : {UInt32{!value}, value}) EXPECT_EQ(set(kAudioObjectSystemObject, at, each), noErr);
    waitFor([&] { return last.count() == 2; });
}

} // namespace bench
