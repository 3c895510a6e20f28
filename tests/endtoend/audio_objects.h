// Wrappers for tests around objects of the classes CoreAudioKVX and CoreAudioListenerKVX.
#pragma once

#include "host/runtime/host.h"

#include <CoreAudio/CoreAudio.h>
#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace endtoend {

/// Return a status as four characters if all four are printable, and as a number if not.
inline std::string statusText(std::int64_t status)
{
    std::string four;
    for (int shift = 24; shift >= 0; shift -= 8) four += static_cast<char>(status >> shift & 0xFF);
    for (char c : four)
        if (c < ' ' || c > '~') return std::to_string(static_cast<std::int32_t>(status));
    return four;
}

/// A CoreAudioKVX object, with functions that pass property values as C++ values.
class AudioObjects {
public:
    explicit AudioObjects(host::Host& host) : object(host.create("CoreAudioKVX")) {}

    /// Return the status of the last call.
    std::string status() const { return statusText(object.get("Lasterror").integer()); }

    /// Set a property and return the status of the call.
    template <class T>
    std::string set(std::int64_t id, const AudioObjectPropertyAddress& at, const T& value) const
    {
        object.call("AudioObjectSetPropertyData", id, at.mSelector, at.mScope, at.mElement,
                    host::MemoryBlock::copyOf(&value, sizeof value));
        return status();
    }

    /// Read a property. The test fails if the call fails or the value has not the size of T.
    template <class T>
    T get(std::int64_t id, const AudioObjectPropertyAddress& at) const
    {
        T value = {};
        const auto block =
            object.call("AudioObjectGetPropertyData", id, at.mSelector, at.mScope, at.mElement).memoryBlock();
        EXPECT_EQ(status(), "0");
        EXPECT_EQ(block.size(), sizeof value);
        if (block.size() == sizeof value) std::memcpy(&value, block.data(), sizeof value);
        return value;
    }

    host::Object object;
};

/// Return the address of a property of a whole audio object.
constexpr AudioObjectPropertyAddress overall(AudioObjectPropertySelector selector)
{
    return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMaster};
}
/// Return the address of a property of one output channel or output stream of a device.
constexpr AudioObjectPropertyAddress ofOutput(AudioObjectPropertySelector selector, UInt32 element)
{
    return {selector, kAudioDevicePropertyScopeOutput, element};
}

/// A listener object and the number of its Changed events. Events arrive when the main thread drains the main
/// queue.
class EventCount {
public:
    EventCount(host::Host& host, std::int64_t id, const AudioObjectPropertyAddress& at)
        : listener(
              host.create("CoreAudioListenerKVX", std::uint64_t(id), at.mSelector, at.mScope, at.mElement))
    {
        listener.on("Changed",
                    [seen = seen_, main = std::this_thread::get_id()](
                        host::Object&, const std::vector<host::Value>&) -> host::Value {
                        EXPECT_EQ(std::this_thread::get_id(), main);
                        ++*seen;
                        return {};
                    });
    }

    int count() const { return *seen_; }
    void waitForEvents(int count) const
    {
        while (*seen_ < count) KVXPlatformDrainMainQueue(0.1);
    }

    host::Object listener;

private:
    std::shared_ptr<int> seen_ = std::make_shared<int>(0);
};

/// Handle the events of all earlier changes. Events arrive in order, so the function makes two more changes
/// and waits for their events.
inline void runAllEvents(host::Host& host)
{
    const AudioObjects audio(host);
    const auto at = overall(kAudioHardwarePropertySleepingIsAllowed);
    const EventCount last(host, kAudioObjectSystemObject, at);
    const auto before = audio.get<UInt32>(kAudioObjectSystemObject, at);
    for (UInt32 value : {UInt32{!before}, before}) audio.set(kAudioObjectSystemObject, at, value);
    last.waitForEvents(2);
}

} // namespace endtoend
