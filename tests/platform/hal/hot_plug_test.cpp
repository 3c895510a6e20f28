// Devices that are plugged in and unplugged: notifications, default devices, and concurrent property reads.
#include "tests/platform/hal/recording_listener.h"

#include <memory>
#include <set>

namespace {

using namespace haltest;

constexpr AudioObjectID systemObject = kAudioObjectSystemObject;
using Notifications = std::vector<std::string>;

std::vector<AudioDeviceID> devices() { return getAll<AudioDeviceID>(systemObject, address('dev#')); }

/// The notifications of the device list and of the default devices that listeners receive while `act` runs.
Notifications notificationsOf(const std::function<void()>& act)
{
    std::vector<std::unique_ptr<RecordingListener>> watchers;
    for (UInt32 selector : {'dev#', 'ownd', 'dOut', 'sOut', 'dIn '})
        watchers.push_back(std::make_unique<RecordingListener>(systemObject, address(selector)));
    act();
    waitForNotifications();
    Notifications received;
    for (const auto& watcher : watchers)
        for (const std::string& at : watcher->takeReceived()) received.push_back(at);
    return received;
}

TEST(HotPlug, NotifiesListenersOfTheList)
{
    const auto before = devices();
    std::unique_ptr<Device> device;
    EXPECT_EQ(notificationsOf([&] { device = std::make_unique<Device>(); }),
              (Notifications{"dev# glob 0", "ownd glob 0"}));
    auto expected = before;
    expected.push_back(*device);
    EXPECT_EQ(devices(), expected) << "new devices come last";
    EXPECT_EQ(notificationsOf([&] { KVXPlatformKillDevice(*device); }), Notifications{})
        << "a dead device stays listed";
    EXPECT_EQ(devices(), expected);
    EXPECT_EQ(notificationsOf([&] { device = nullptr; }), (Notifications{"dev# glob 0", "ownd glob 0"}));
    EXPECT_EQ(devices(), before);
}

TEST(HotPlug, MovesBothRoles)
{
    const AudioDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    for (bool isKilled : {false, true}) {
        auto device = std::make_unique<Device>();
        EXPECT_EQ(notificationsOf([&] {
                      for (UInt32 role : {'dOut', 'sOut'})
                          set<AudioDeviceID>(systemObject, address(role), *device);
                  }),
                  (Notifications{"dOut glob 0", "sOut glob 0"}));
        Notifications expected = {"dOut glob 0", "sOut glob 0"};
        if (!isKilled) expected.insert(expected.begin(), {"dev# glob 0", "ownd glob 0"});
        EXPECT_EQ(notificationsOf([&] {
                      if (isKilled)
                          KVXPlatformKillDevice(*device);
                      else
                          device = nullptr;
                  }),
                  expected);
        for (UInt32 role : {'dOut', 'sOut'})
            EXPECT_EQ(get<AudioDeviceID>(systemObject, address(role)), builtIn);
    }
}

TEST(HotPlug, MovesOnlyTheRolesThatTheDeviceHad)
{
    const AudioDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    auto first = std::make_unique<Device>(), second = std::make_unique<Device>();
    set<AudioDeviceID>(systemObject, address('dOut'), *first);
    set<AudioDeviceID>(systemObject, address('sOut'), *second);
    EXPECT_EQ(notificationsOf([&] { first = nullptr; }),
              (Notifications{"dev# glob 0", "ownd glob 0", "dOut glob 0"}));
    EXPECT_EQ(get<AudioDeviceID>(systemObject, address('dOut')), builtIn);
    EXPECT_EQ(get<AudioDeviceID>(systemObject, address('sOut')), AudioDeviceID{*second});
}

TEST(HotPlug, GivesNewIDsToDevicesAndStreams)
{
    std::set<AudioObjectID> seen;
    for (AudioDeviceID device : devices()) {
        seen.insert(device);
        for (AudioStreamID stream : getAll<AudioStreamID>(device, address('ownd'))) seen.insert(stream);
    }
    for (int i = 0; i < 100; ++i) {
        Device device;
        EXPECT_TRUE(seen.insert(device).second);
        for (AudioStreamID stream : getAll<AudioStreamID>(device, address('ownd')))
            EXPECT_TRUE(seen.insert(stream).second);
    }
    EXPECT_EQ(seen.count(kAudioObjectUnknown), 0u);
    EXPECT_EQ(seen.count(kAudioObjectSystemObject), 0u);
}

TEST(HotPlug, ConfigurationNotifiesChangedPropertiesOnly)
{
    Device device;
    const AudioStreamID stream = getAll<AudioStreamID>(device, address('stm#')).at(0);
    const Notifications formats = {"sfmt glob 0", "pft  glob 0"};
    const struct {
        double rate;
        uint32_t channels, slice;
        Notifications ofDevice, ofStream;
    } facts[] = {
        {48000, 0, 0, {"nsrt glob 0", "asrt glob 0", "sfmt glob 0"}, formats},
        {48000, 2, 64, {}, {}}, // the settings are equal to the present ones
        {0, 0, 128, {"fsiz glob 0", "bsiz glob 0", "slay glob 0"}, {}},
        {0,
         6,
         0,
         {"bsiz glob 0", "slay glob 0", "bsz# glob 0", "srnd glob 0", "sfmt glob 0", "sfm# glob 0",
          "chnm glob 1", "chnm glob 2", "lchn glob 1", "lchn glob 2"},
         {"sfmt glob 0", "pft  glob 0", "pft# glob 0", "sfma glob 0", "pfta glob 0"}},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.rate) + " " + std::to_string(fact.channels) + " " +
                     std::to_string(fact.slice));
        RecordingListener ofDevice(device), ofStream(stream);
        ASSERT_EQ(KVXPlatformConfigureDevice(device, fact.rate, fact.channels, fact.slice), 0);
        waitForNotifications();
        EXPECT_EQ(ofDevice.takeReceived(), fact.ofDevice);
        EXPECT_EQ(ofStream.takeReceived(), fact.ofStream);
    }
    EXPECT_EQ(get<AudioStreamBasicDescription>(stream, address('sfmt')).mChannelsPerFrame, 6u);
}

// Two threads plug devices in and unplug them, while a third thread reads the devices' properties. Each read
// either succeeds or is refused because the object has ended.
TEST(HotPlug, ConcurrentReadsSucceedOrAreRefused)
{
    std::atomic<int> plugging{2};
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 100; ++n) {
                Device device;
                Procedure procedure(device, [](const Call& call) { call.fill(1); });
                procedure.start();
                if (n % 2) KVXPlatformStep(device, 64);
                if (n % 3 == 0) device.unplug();
            }
            --plugging;
        });
    std::size_t successes = 0;
    while (plugging || successes == 0)
        for (AudioDeviceID device : devices())
            for (UInt32 selector : {'nsrt', 'stm#', 'slay', 'name', 'livn', 'goin', 'sfmt'}) {
                const auto at = address(selector);
                char bytes[256];
                UInt32 size = sizeof bytes;
                const OSStatus status = AudioObjectGetPropertyData(device, &at, 0, nullptr, &size, bytes);
                ASSERT_TRUE(status == noErr || status == kAudioHardwareBadObjectError) << text(status);
                successes += status == noErr;
            }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(liveCount("IOProc"), 0u);
}

TEST(HotPlug, RefusesObjectsThatCannotBeUnplugged)
{
    const AudioDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    const AudioStreamID stream = getAll<AudioStreamID>(builtIn, address('stm#')).at(0);
    EXPECT_EQ(notificationsOf([&] {
                  EXPECT_NE(KVXPlatformRemoveSimulatedDevice(builtIn), 0);
                  EXPECT_NE(KVXPlatformRemoveSimulatedDevice(static_cast<KVXDeviceID>(stream)), 0);
                  EXPECT_NE(KVXPlatformRemoveSimulatedDevice(0), 0);
                  EXPECT_NE(KVXPlatformRemoveSimulatedDevice(kAudioObjectSystemObject), 0);
                  EXPECT_NE(KVXPlatformKillDevice(static_cast<KVXDeviceID>(stream)), 0);
              }),
              Notifications{});
    EXPECT_EQ(get<UInt32>(builtIn, address('livn')), 1u);
}

} // namespace
