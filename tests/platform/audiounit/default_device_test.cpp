// Tests units that follow the default devices, and units whose device changes while they run.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace {

using namespace test;

constexpr auto outputRole = kAudioHardwarePropertyDefaultOutputDevice;
constexpr auto systemRole = kAudioHardwarePropertyDefaultSystemOutputDevice;

struct Playing {
    explicit Playing(OSType subType) : unit(subType), feeder(canonical(44100, 2))
    {
        feeder.mostRequests = 0;
        EXPECT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
        EXPECT_EQ(AudioUnitInitialize(unit), noErr);
        EXPECT_EQ(AudioOutputUnitStart(unit), noErr);
    }
    AudioDeviceID device() const { return unit.get<AudioDeviceID>(2000, 0, 0); }
    bool isRunning() const { return unit.get<UInt32>(2001, 0, 0); }
    /// Whether the unit has moved to a device and that device runs. The device itself must be checked because
    /// during a move the unit's properties already name the new device and report that the unit is running.
    bool hasMovedTo(const SteppedDevice& there) const
    {
        return device() == there.id() && isRunning() && there.isRunning();
    }
    /// Whether an I/O cycle of a device calls the unit's callback exactly once.
    bool isOn(SteppedDevice& there)
    {
        const int before = feeder.calls;
        const UInt32 frames = there.step(64);
        return frames == 64 && feeder.calls == before + 1;
    }
    Unit unit;
    Feeder feeder;
};

TEST(DefaultDevice, IsFollowedWhileRunning)
{
    const struct {
        OSType subType;
        AudioHardwarePropertyID role;
    } facts[] = {{'def ', outputRole}, {'sys ', systemRole}};
    for (const auto& fact : facts) {
        SteppedDevice first(44100, 2, 64), second(44100, 2, 64);
        first.makeDefault(fact.role);
        Playing playing(fact.subType);
        EXPECT_EQ(playing.device(), first.id());
        EXPECT_TRUE(playing.isOn(first));

        second.makeDefault(fact.role);
        ASSERT_TRUE(eventually([&] { return playing.hasMovedTo(second); }));
        EXPECT_TRUE(playing.isOn(second));
        EXPECT_EQ(first.step(64), 0u) << "detached from the first";
        EXPECT_EQ(second.played[0], noise(64, 0)) << "the client's frames continue";

        const AudioDeviceID removed = second.id();
        second.remove();
        ASSERT_TRUE(eventually([&] {
            const AudioDeviceID device = playing.device();
            return device != 0 && device != removed && playing.isRunning();
        }));
        AudioOutputUnitStop(playing.unit);
        EXPECT_FALSE(playing.isRunning());
    }
}

TEST(DefaultDevice, IsReadAtEachStart)
{
    SteppedDevice first(44100, 2, 64), second(44100, 2, 64);
    first.makeDefault();
    for (const OSType subType : {'def ', 'ahal'}) {
        first.makeDefault();
        Playing playing(subType);
        ASSERT_EQ(AudioOutputUnitStop(playing.unit), noErr);
        second.makeDefault();
        ASSERT_TRUE(eventually([&] { return playing.device() == second.id(); }));
        ASSERT_EQ(AudioOutputUnitStart(playing.unit), noErr);
        EXPECT_TRUE(playing.isOn(second));
        EXPECT_EQ(first.step(64), 0u);
    }
}

TEST(DefaultDevice, DoesNotMoveARunningHALUnit)
{
    SteppedDevice first(44100, 2, 64), second(44100, 2, 64);
    first.makeDefault();
    Playing hal('ahal'), follower('def ');
    second.makeDefault();
    ASSERT_TRUE(eventually([&] { return follower.hasMovedTo(second); }));
    EXPECT_EQ(hal.device(), first.id());
    EXPECT_TRUE(hal.isOn(first));
    EXPECT_TRUE(follower.isOn(second));
}

TEST(DefaultDevice, IsTriedAgainAfterTheNextChange)
{
    SteppedDevice first(44100, 2, 64), second(44100, 2, 64);
    first.makeDefault();
    Playing playing('def ');
    KVXPlatformRefuseStart(second.id(), kAudioHardwareUnspecifiedError);
    second.makeDefault();
    ASSERT_TRUE(eventually([&] { return !playing.isRunning(); }));
    first.makeDefault();
    ASSERT_TRUE(eventually([&] { return playing.isRunning(); }));
    EXPECT_TRUE(playing.isOn(first));
}

TEST(DefaultDevice, FollowerAdaptsToRateAndChannels)
{
    SteppedDevice first(44100, 2, 64), second(88200, 4, 64);
    first.makeDefault();
    Playing playing('def ');
    EXPECT_TRUE(playing.isOn(first));
    second.makeDefault();
    ASSERT_TRUE(eventually([&] { return playing.hasMovedTo(second); }));
    const int before = playing.feeder.calls;
    second.step(640);
    EXPECT_GT(playing.feeder.calls, before);
    playing.feeder.mostRequests = 1000;
    second.step(6400);
    UInt32 frames = 0;
    for (const Request& each : playing.feeder.requests) frames += each.frames;
    EXPECT_NEAR(frames, 3200, 40) << "half as many frames as the device played";
}

TEST(DefaultDevice, ChangesWhileUnitsStartAndStop)
{
    SteppedDevice first(44100, 2, 16, false), second(48000, 4, 16, false);
    first.makeDefault();
    std::atomic<bool> isOver{false};
    std::thread changes([&] {
        for (int change = 0; change < 200; ++change) {
            (change % 2 ? first : second).makeDefault();
            KVXPlatformConfigureDevice(first.id(), change % 4 < 2 ? 44100 : 22050, 0, 0);
            std::this_thread::yield();
        }
        isOver = true;
    });
    {
        Playing steady('def ');
        while (!isOver) {
            Playing brief('def ');
            brief.isRunning();
            brief.device();
            AudioOutputUnitStop(brief.unit);
            AudioOutputUnitStart(brief.unit);
        }
        changes.join();
        first.makeDefault();
        EXPECT_TRUE(eventually([&] { return steady.isRunning() && steady.device() == first.id(); }));
        const int before = steady.feeder.calls;
        EXPECT_TRUE(eventually([&] { return steady.feeder.calls > before; })) << "the unit still runs";
    }
}

TEST(RunningDevice, RateChangeIsFollowed)
{
    SteppedDevice device(44100, 2, 64);
    Playing playing('ahal');
    ASSERT_EQ(playing.unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    EXPECT_TRUE(playing.isOn(device));
    KVXPlatformConfigureDevice(device.id(), 88200, 0, 0);
    playing.feeder.mostRequests = 100000;
    ASSERT_TRUE(eventually([&] {
        playing.feeder.requests.clear();
        device.step(6400);
        UInt32 frames = 0;
        for (const Request& each : playing.feeder.requests) frames += each.frames;
        return frames > 3100 && frames < 3400;
    }));
    KVXPlatformConfigureDevice(device.id(), 44100, 0, 0);
    ASSERT_TRUE(eventually([&] {
        playing.feeder.requests.clear();
        device.played.clear();
        device.step(640);
        return playing.feeder.requests.size() == 10 &&
               device.played[0] == noise(playing.feeder.requests[0].time.mSampleTime, 0);
    })) << "at the client's rate the samples are exact again";
}

TEST(RunningDevice, RemovedDeviceLetsTheUnitStop)
{
    auto device = std::make_unique<SteppedDevice>(44100, 2, 64);
    Playing playing('ahal');
    ASSERT_EQ(playing.unit.set<AudioDeviceID>(2000, 0, 0, device->id()), noErr);
    EXPECT_TRUE(playing.isOn(*device));
    device->remove();
    const int before = playing.feeder.calls;
    EXPECT_TRUE(eventually([&] { return playing.feeder.calls > before; }))
        << "I/O cycles go on without output";
    ASSERT_EQ(AudioOutputUnitStop(playing.unit), noErr);
    EXPECT_FALSE(playing.isRunning());
    const int calls = playing.feeder.calls;
    EXPECT_NE(AudioOutputUnitStart(playing.unit), noErr) << "the device was removed";
    EXPECT_EQ(playing.feeder.calls, calls);
    ASSERT_EQ(playing.unit.set<AudioDeviceID>(2000, 0, 0, 0), noErr);
    EXPECT_EQ(AudioOutputUnitStart(playing.unit), noErr) << "on the default device";
}

TEST(RunningDevice, DeadDeviceLetsTheUnitStop)
{
    SteppedDevice device(44100, 2, 64);
    Playing playing('ahal');
    ASSERT_EQ(playing.unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    KVXPlatformKillDevice(device.id());
    EXPECT_TRUE(eventually([&] { return playing.feeder.calls > 0; }));
    ASSERT_EQ(AudioOutputUnitStop(playing.unit), noErr);
}

} // namespace
