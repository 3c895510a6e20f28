// CoreAudioKVX and CoreAudioListenerKVX, as a host program uses them.
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

/// A status as its four characters if all are printable, otherwise as a number.
inline std::string statusText(std::int64_t status)
{
    std::string four;
    for (int shift = 24; shift >= 0; shift -= 8) four += static_cast<char>(status >> shift & 0xFF);
    for (char c : four)
        if (c < ' ' || c > '~') return std::to_string(static_cast<std::int32_t>(status));
    return four;
}

/// A CoreAudioKVX object. Property values are C++ values.
class AudioObjects {
public:
    explicit AudioObjects(host::Host& host) : object(host.create("CoreAudioKVX")) {}

    /// The status of the last call.
    std::string status() const { return statusText(object.get("Lasterror").integer()); }

    /// Set a property. Returns the status.
    template <class T>
    std::string set(std::int64_t id, const AudioObjectPropertyAddress& at, const T& value) const
    {
        object.call("AudioObjectSetPropertyData", id, at.mSelector, at.mScope, at.mElement,
                    host::MemoryBlock::copyOf(&value, sizeof value));
        return status();
    }

    /// Read a property. The test fails on an error or another size.
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

/// The address of a property of the whole object.
constexpr AudioObjectPropertyAddress overall(AudioObjectPropertySelector selector)
{
    return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMaster};
}
/// The address of a property of one output channel or stream.
constexpr AudioObjectPropertyAddress ofOutput(AudioObjectPropertySelector selector, UInt32 element)
{
    return {selector, kAudioDevicePropertyScopeOutput, element};
}

/// A listener object that counts its Changed events. The main queue delivers events, on the main thread only.
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

/// Handle the events of all changes made so far: events arrive in order, so the events of a further change
/// are last.
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
