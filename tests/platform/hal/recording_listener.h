// A property listener that records, in order, the changes that it receives, and whether it was called on the
// test's thread.
#pragma once

#include "tests/platform/hal/test_device.h"

#include <mutex>
#include <thread>
#include <utility>

namespace haltest {

constexpr auto anySelector = kAudioObjectPropertySelectorWildcard;
constexpr auto anyScope = kAudioObjectPropertyScopeWildcard;
constexpr auto anyElement = kAudioObjectPropertyElementWildcard;

/// An address as text, such as "volm outp 1".
inline std::string text(const AudioObjectPropertyAddress& at)
{
    return text(at.mSelector) + " " + text(at.mScope) + " " + std::to_string(at.mElement);
}

class RecordingListener {
public:
    explicit RecordingListener(AudioObjectID object,
                               const AudioObjectPropertyAddress& at = address(anySelector, anyScope,
                                                                              anyElement),
                               std::function<void()> body = {})
        : object_(object), at_(at), body_(std::move(body))
    {
        EXPECT_EQ(AudioObjectAddPropertyListener(object_, &at_, receive, this), noErr);
    }
    ~RecordingListener() { remove(); }
    RecordingListener(const RecordingListener&) = delete;
    RecordingListener& operator=(const RecordingListener&) = delete;

    /// Remove the listener. The function may be called twice, and inside the listener's own call.
    OSStatus remove()
    {
        return isRemoved_.exchange(true) ? OSStatus{noErr}
                                         : AudioObjectRemovePropertyListener(object_, &at_, receive, this);
    }

    int count() const { return count_; }
    /// Whether a call ran on the thread that constructed the listener.
    bool wasCalledHere() const { return wasCalledHere_; }

    std::vector<std::string> takeReceived()
    {
        const std::lock_guard<std::mutex> hold(lock_);
        return std::exchange(received_, {});
    }

private:
    static OSStatus receive(AudioObjectID object, UInt32 count, const AudioObjectPropertyAddress* addresses,
                            void* client)
    {
        auto& self = *static_cast<RecordingListener*>(client);
        EXPECT_EQ(object, self.object_);
        EXPECT_EQ(count, 1u);
        {
            const std::lock_guard<std::mutex> hold(self.lock_);
            for (UInt32 i = 0; i < count; ++i) self.received_.push_back(text(addresses[i]));
        }
        if (std::this_thread::get_id() == self.maker_) self.wasCalledHere_ = true;
        ++self.count_;
        if (self.body_) self.body_();
        return noErr;
    }

    const AudioObjectID object_;
    const AudioObjectPropertyAddress at_;
    const std::function<void()> body_;
    const std::thread::id maker_ = std::this_thread::get_id();
    std::atomic<bool> isRemoved_{false}, wasCalledHere_{false};
    std::atomic<int> count_{0};
    std::mutex lock_;
    std::vector<std::string> received_;
};

/// Wait until listeners have received all earlier changes. One thread calls all listeners in order, so the
/// wait ends when a listener receives a later change.
inline void waitForNotifications()
{
    const auto at = address(kAudioHardwarePropertySleepingIsAllowed);
    const auto value = get<UInt32>(kAudioObjectSystemObject, at);
    RecordingListener last(kAudioObjectSystemObject, at);
    for (UInt32 each : {UInt32{!value}, value}) EXPECT_EQ(set(kAudioObjectSystemObject, at, each), noErr);
    waitFor([&] { return last.count() == 2; });
}

} // namespace haltest
