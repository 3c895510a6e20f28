// Devices plugged in and out: who is told, what moves on, what can be asked meanwhile.
#include "tests/platform/hal/watcher.h"

#include <memory>
#include <set>

namespace {

using namespace bench;

constexpr AudioObjectID systemObject = kAudioObjectSystemObject;
using Told = std::vector<std::string>;

std::vector<AudioDeviceID> devices() { return getAll<AudioDeviceID>(systemObject, address('dev#')); }

/// What the system tells while `act` runs, of its list and its roles.
Told toldBy(const std::function<void()>& act)
{
    std::vector<std::unique_ptr<Watcher>> watchers;
    for (UInt32 selector : {'dev#', 'ownd', 'dOut', 'sOut', 'dIn '})
        watchers.push_back(std::make_unique<Watcher>(systemObject, address(selector)));
    act();
    waitUntilTold();
    Told told;
    for (const auto& watcher : watchers)
        for (const std::string& at : watcher->takeTold()) told.push_back(at);
    return told;
}

TEST(HotPlug, IsToldByTheList)
{
    const auto before = devices();
    std::unique_ptr<Device> device;
    EXPECT_EQ(toldBy([&] { device = std::make_unique<Device>(); }), (Told{"dev# glob 0", "ownd glob 0"}));
    auto expected = before;
    expected.push_back(*device);
    EXPECT_EQ(devices(), expected) << "new ones stand behind the others";
    EXPECT_EQ(toldBy([&] { KVXPlatformKillDevice(*device); }), Told{}) << "the dead stay";
    EXPECT_EQ(devices(), expected);
    EXPECT_EQ(toldBy([&] { device = nullptr; }), (Told{"dev# glob 0", "ownd glob 0"}));
    EXPECT_EQ(devices(), before);
}

TEST(HotPlug, MovesBothRolesOn)
{
    const AudioDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    for (bool isKilled : {false, true}) {
        auto device = std::make_unique<Device>();
        EXPECT_EQ(toldBy([&] {
                      for (UInt32 role : {'dOut', 'sOut'})
                          set<AudioDeviceID>(systemObject, address(role), *device);
                  }),
                  (Told{"dOut glob 0", "sOut glob 0"}));
        Told expected = {"dOut glob 0", "sOut glob 0"};
        if (!isKilled) expected.insert(expected.begin(), {"dev# glob 0", "ownd glob 0"});
        EXPECT_EQ(toldBy([&] {
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
    EXPECT_EQ(toldBy([&] { first = nullptr; }), (Told{"dev# glob 0", "ownd glob 0", "dOut glob 0"}));
    EXPECT_EQ(get<AudioDeviceID>(systemObject, address('dOut')), builtIn);
    EXPECT_EQ(get<AudioDeviceID>(systemObject, address('sOut')), AudioDeviceID{*second});
}

// The number of a device, of a stream, of anything that was: none is ever used for something else.
TEST(HotPlug, GivesNewNumbersToDevicesAndStreams)
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

TEST(HotPlug, OfAConfigurationTellsWhatChangedAndNothingElse)
{
    Device device;
    const AudioStreamID stream = getAll<AudioStreamID>(device, address('stm#')).at(0);
    const Told formats = {"sfmt glob 0", "pft  glob 0"};
    const struct {
        double rate;
        uint32_t channels, slice;
        Told ofDevice, ofStream;
    } facts[] = {
        {48000, 0, 0, {"nsrt glob 0", "asrt glob 0", "sfmt glob 0"}, formats},
        {48000, 2, 64, {}, {}}, // as it is
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
        Watcher byDevice(device), byStream(stream);
        ASSERT_EQ(KVXPlatformConfigureDevice(device, fact.rate, fact.channels, fact.slice), 0);
        waitUntilTold();
        EXPECT_EQ(byDevice.takeTold(), fact.ofDevice);
        EXPECT_EQ(byStream.takeTold(), fact.ofStream);
    }
    EXPECT_EQ(get<AudioStreamBasicDescription>(stream, address('sfmt')).mChannelsPerFrame, 6u);
}

// Devices come and go on two threads while a third asks all of them everything: each question has an answer
// or is refused because the object has gone.
TEST(HotPlug, NeverConfusesThoseWhoAsk)
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
    std::size_t answers = 0;
    while (plugging || answers == 0)
        for (AudioDeviceID device : devices())
            for (UInt32 selector : {'nsrt', 'stm#', 'slay', 'name', 'livn', 'goin', 'sfmt'}) {
                const auto at = address(selector);
                char bytes[256];
                UInt32 size = sizeof bytes;
                const OSStatus status = AudioObjectGetPropertyData(device, &at, 0, nullptr, &size, bytes);
                ASSERT_TRUE(status == noErr || status == kAudioHardwareBadObjectError) << text(status);
                answers += status == noErr;
            }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(account("IOProc"), 0u);
}

TEST(HotPlug, LeavesWhatIsNoPluggedDeviceAlone)
{
    const AudioDeviceID builtIn = KVXPlatformBuiltInSimulatedDevice();
    const AudioStreamID stream = getAll<AudioStreamID>(builtIn, address('stm#')).at(0);
    EXPECT_EQ(toldBy([&] {
                  EXPECT_NE(KVXPlatformRemoveSimulatedDevice(builtIn), 0);
                  EXPECT_NE(KVXPlatformRemoveSimulatedDevice(static_cast<KVXDeviceID>(stream)), 0);
                  EXPECT_NE(KVXPlatformRemoveSimulatedDevice(0), 0);
                  EXPECT_NE(KVXPlatformRemoveSimulatedDevice(kAudioObjectSystemObject), 0);
                  EXPECT_NE(KVXPlatformKillDevice(static_cast<KVXDeviceID>(stream)), 0);
              }),
              Told{});
    EXPECT_EQ(get<UInt32>(builtIn, address('livn')), 1u);
}

} // namespace
