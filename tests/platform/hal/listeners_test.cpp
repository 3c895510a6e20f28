// Who is told of which change, from which thread, and until when.
#include "tests/platform/hal/bench.h"

#include <mutex>
#include <thread>

namespace {

using namespace bench;

/// A listener that notes what it is told.
class Listener {
public:
    Listener(AudioObjectID object, const AudioObjectPropertyAddress& at, std::function<void()> body = {})
        : object_(object), at_(at), body_(std::move(body))
    {
        EXPECT_EQ(AudioObjectAddPropertyListener(object_, &at_, tell, this), noErr);
    }
    ~Listener() { remove(); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    OSStatus remove()
    {
        if (isRemoved_.exchange(true)) return noErr;
        return AudioObjectRemovePropertyListener(object_, &at_, tell, this);
    }

    int count() const { return count_; }
    std::vector<AudioObjectPropertyAddress> addresses()
    {
        const std::lock_guard<std::mutex> hold(lock_);
        return addresses_;
    }
    std::thread::id thread()
    {
        const std::lock_guard<std::mutex> hold(lock_);
        return thread_;
    }

private:
    static OSStatus tell(AudioObjectID object, UInt32 count, const AudioObjectPropertyAddress* addresses,
                         void* client)
    {
        auto& self = *static_cast<Listener*>(client);
        EXPECT_EQ(object, self.object_);
        EXPECT_GE(count, 1u);
        {
            const std::lock_guard<std::mutex> hold(self.lock_);
            self.addresses_.insert(self.addresses_.end(), addresses, addresses + count);
            self.thread_ = std::this_thread::get_id();
        }
        if (self.body_) self.body_();
        ++self.count_;
        return noErr;
    }

    AudioObjectID object_;
    AudioObjectPropertyAddress at_;
    std::function<void()> body_;
    std::atomic<bool> isRemoved_{false};
    std::atomic<int> count_{0};
    std::mutex lock_;
    std::vector<AudioObjectPropertyAddress> addresses_;
    std::thread::id thread_;
};

constexpr auto anySelector = kAudioObjectPropertySelectorWildcard;
constexpr auto anyScope = kAudioObjectPropertyScopeWildcard;
constexpr auto anyElement = kAudioObjectPropertyElementWildcard;

AudioObjectPropertyAddress volume(UInt32 channel)
{
    return address(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeOutput, channel);
}

TEST(Listeners, AreToldOfWhatTheyAskedFor)
{
    Device device;
    const AudioObjectID id = device;
    const struct {
        AudioObjectPropertyAddress wanted;
        bool isTold;
        const char* why;
    } facts[] = {
        {volume(1), true, "just this"},
        {volume(2), false, "another channel"},
        {volume(anyElement), true, "any channel"},
        {address(kAudioDevicePropertyMute, kAudioDevicePropertyScopeOutput, 1), false, "another property"},
        {address(anySelector, kAudioDevicePropertyScopeOutput, 1), true, "any property"},
        {address(kAudioDevicePropertyVolumeScalar, anyScope, 1), true, "any scope"},
        {address(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeInput, 1), false,
         "the other side"},
        {address(anySelector, anyScope, anyElement), true, "anything"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        Listener last(id, address(anySelector, anyScope, anyElement));
        Listener listener(id, fact.wanted);
        const float before = get<Float32>(id, volume(1));
        ASSERT_EQ(set<Float32>(id, volume(1), before == 0.5f ? 0.25f : 0.5f), noErr);
        // Once a later change has been told, so have all before it.
        ASSERT_EQ(set<UInt32>(id, address(kAudioDevicePropertyMute, kAudioDevicePropertyScopeOutput, 0),
                              !get<UInt32>(
                                  id, address(kAudioDevicePropertyMute, kAudioDevicePropertyScopeOutput, 0))),
                  noErr);
        waitFor([&] {
            const auto told = last.addresses();
            return !told.empty() && told.back().mSelector == kAudioDevicePropertyMute;
        });
        const auto told = listener.addresses();
        const auto isVolume = [](const auto& at) { return at.mSelector == kAudioDevicePropertyVolumeScalar; };
        EXPECT_EQ(std::count_if(told.begin(), told.end(), isVolume), fact.isTold ? 1 : 0);
    }
}

TEST(Listeners, AreCalledFromAThreadOfThePlatforms)
{
    Device device;
    Listener listener(device, volume(1));
    set<Float32>(device, volume(1), 0.5f);
    waitFor([&] { return listener.count() == 1; });
    EXPECT_NE(listener.thread(), std::this_thread::get_id());
}

TEST(Listeners, AreNotToldOfWhatStaysAsItIs)
{
    Device device;
    Listener listener(device, address(anySelector, anyScope, anyElement));
    set<Float32>(device, volume(1), 1.0f); // as it was
    set<UInt32>(device, address(kAudioDevicePropertyBufferFrameSize), 64);
    set<Float32>(device, volume(2), 0.5f);
    waitFor([&] { return listener.count() > 0; });
    for (const auto& at : listener.addresses()) EXPECT_EQ(at.mElement, 2u) << text(at.mSelector);
}

TEST(Listeners, HearOfDevicesThatComeGoDieAndRun)
{
    const auto devices = address(kAudioHardwarePropertyDevices);
    Listener list(kAudioObjectSystemObject, devices);
    Device device;
    waitFor([&] { return list.count() == 1; });
    Listener alive(device, address(kAudioDevicePropertyDeviceIsAlive));
    Listener running(device, address(kAudioDevicePropertyDeviceIsRunning));
    {
        Procedure procedure(device, [](const Call&) {});
        procedure.start();
        waitFor([&] { return running.count() == 1; });
        procedure.stop();
        waitFor([&] { return running.count() == 2; });
    }
    KVXPlatformKillDevice(device);
    waitFor([&] { return alive.count() == 1; });
    device.unplug();
    waitFor([&] { return list.count() == 2; });
    EXPECT_EQ(alive.remove(), noErr) << "what is gone can still be let go of";
    EXPECT_EQ(alive.count(), 1) << "it died once";
}

TEST(Listeners, HearOfTheDefaultDevice)
{
    const auto role = address(kAudioHardwarePropertyDefaultOutputDevice);
    Device device;
    Listener listener(kAudioObjectSystemObject, role);
    set<AudioDeviceID>(kAudioObjectSystemObject, role, device);
    waitFor([&] { return listener.count() == 1; });
    device.unplug();
    waitFor([&] { return listener.count() == 2; });
}

TEST(Listeners, RemoveThemselvesInTheirOwnCall)
{
    Device device;
    Listener* self = nullptr;
    Listener once(device, volume(1), [&] { EXPECT_EQ(self->remove(), noErr); });
    self = &once;
    Listener always(device, volume(1));
    for (float value : {0.1f, 0.2f, 0.3f}) set<Float32>(device, volume(1), value);
    waitFor([&] { return always.count() == 3; });
    EXPECT_EQ(once.count(), 1);
}

TEST(Listeners, AreNotCalledOnceTheyAreRemoved)
{
    Device device;
    std::atomic<bool> mustEnd{false};
    std::thread busy([&] {
        for (float value = 0; !mustEnd; value = value < 1 ? value + 0.125f : 0)
            set<Float32>(device, volume(1), value);
    });
    for (int i = 0; i < 200; ++i) {
        std::atomic<bool> isGone{false}, hasErred{false};
        Listener listener(device, volume(1), [&] {
            if (isGone) hasErred = true;
        });
        if (i % 4 == 0) waitFor([&] { return listener.count() > 0; });
        listener.remove();
        isGone = true;
        EXPECT_FALSE(hasErred);
    }
    mustEnd = true;
    busy.join();
    EXPECT_EQ(account("property listener"), 0u);
}

TEST(Listeners, MayChangeWhatTheyListenTo)
{
    Device device;
    Listener listener(device, volume(1), [&] {
        const float value = get<Float32>(device, volume(1));
        if (value > 0.5f) set<Float32>(device, volume(1), value - 0.0625f);
    });
    set<Float32>(device, volume(1), 0.75f);
    waitFor([&] { return get<Float32>(device, volume(1)) == 0.5f; });
}

OSStatus nobody(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) { return noErr; }

TEST(Listeners, AnswerMisuse)
{
    Device device;
    const AudioObjectID none = 0x7FFFFFFF;
    const auto at = volume(1), other = volume(2);
    int a = 0, b = 0;
    EXPECT_EQ(AudioObjectAddPropertyListener(none, &at, nobody, &a), kAudioHardwareBadObjectError);
    EXPECT_NE(AudioObjectAddPropertyListener(device, nullptr, nobody, &a), noErr);
    EXPECT_NE(AudioObjectAddPropertyListener(device, &at, nullptr, &a), noErr);
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &at, nobody, &a), noErr) << "never added";
    ASSERT_EQ(AudioObjectAddPropertyListener(device, &at, nobody, &a), noErr);
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &other, nobody, &a), noErr) << "all four must match";
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &at, nobody, &b), noErr);
    EXPECT_NE(AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &at, nobody, &a), noErr);
    EXPECT_EQ(AudioObjectRemovePropertyListener(device, &at, nobody, &a), noErr);
    EXPECT_NE(AudioObjectRemovePropertyListener(device, &at, nobody, &a), noErr) << "once";
}

} // namespace
