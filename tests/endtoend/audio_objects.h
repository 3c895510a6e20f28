// CoreAudioKVX and CoreAudioListenerKVX as a host program uses them: values in one line, events by waiting.
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

/// A status as one reads it: four characters, or a number.
inline std::string statusText(std::int64_t status)
{
    std::string four;
    for (int shift = 24; shift >= 0; shift -= 8) four += static_cast<char>(status >> shift & 0xFF);
    for (char c : four)
        if (c < ' ' || c > '~') return std::to_string(static_cast<std::int32_t>(status));
    return four;
}

/// A host program's CoreAudioKVX.
class AudioObjects {
public:
    explicit AudioObjects(host::Host& host) : object(host.create("CoreAudioKVX")) {}

    std::string status() const { return statusText(object.get("Lasterror").integer()); }

    template <class T>
    std::string set(std::int64_t id, const AudioObjectPropertyAddress& at, const T& value) const
    {
        object.call("AudioObjectSetPropertyData", id, at.mSelector, at.mScope, at.mElement,
                    host::MemoryBlock::copyOf(&value, sizeof value));
        return status();
    }

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

constexpr AudioObjectPropertyAddress overall(AudioObjectPropertySelector selector)
{
    return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMaster};
}
constexpr AudioObjectPropertyAddress ofOutput(AudioObjectPropertySelector selector, UInt32 element)
{
    return {selector, kAudioDevicePropertyScopeOutput, element};
}

/// A host program's listener, and how often its event came. Events are told by the main thread's queue.
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

/// Run every event of the changes made so far: one more change is made, and its event waited for.
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
