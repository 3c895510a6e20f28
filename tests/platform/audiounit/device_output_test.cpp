// Tests the samples that a device plays for an output unit. The test runs the I/O cycles of the device.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace test;

/// A HAL unit that plays noise of a given format on a device.
struct Playing {
    Playing(const SteppedDevice& device, const AudioStreamBasicDescription& format)
        : unit('ahal'), feeder(format)
    {
        EXPECT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
        EXPECT_EQ(unit.setFormat(1, format), noErr);
        EXPECT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    }
    void start()
    {
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    }
    Unit unit;
    Feeder feeder;
};

float expected(UInt32 frame, UInt32 channel, UInt32 sourceChannels)
{
    return channel < sourceChannels ? noise(frame, channel) : 0;
}

void expectPlayed(const SteppedDevice& device, UInt32 frames, UInt32 channels, UInt32 sourceChannels)
{
    ASSERT_EQ(device.played.size(), std::size_t{frames} * channels);
    for (UInt32 frame = 0; frame < frames; ++frame)
        for (UInt32 c = 0; c < channels; ++c)
            ASSERT_EQ(device.played[frame * channels + c], expected(frame, c, sourceChannels))
                << "frame " << frame << ", channel " << c;
}

TEST(DeviceOutput, PlaysEveryFormatExactlyAtTheDevicesRate)
{
    // clang-format off
    const struct { AudioStreamBasicDescription format; const char* why; } facts[] = {
        {canonical(44100, 2),                                        "float non-interleaved"},
        {interleaved(44100, 2),                                      "float"},
        {canonical(44100, 1),                                        "mono: the first channel only"},
        {interleaved(44100, 6),                                      "more channels than the device"},
        {pcm(44100, 2, 16, isSigned | isPacked),                     "16 bits"},
        {pcm(44100, 2, 16, isSigned | isPacked | isBig),             "16 bits, big-endian"},
        {pcm(44100, 2, 24, isSigned | isPacked),                     "24 bits"},
        {pcm(44100, 2, 24, isSigned | isPacked | isBig | isNonInterleaved),   "24 bits, big-endian, non-interleaved"},
        {pcm(44100, 2, 32, isSigned | isPacked | isBig),             "32 bits, big-endian"},
        {pcm(44100, 2, 8, isPacked),                                 "8 bits unsigned"},
        {pcm(44100, 2, 64, isFloat | isPacked | isBig),              "double, big-endian"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        SteppedDevice device(44100, 2, 512);
        Playing playing(device, fact.format);
        playing.start();
        ASSERT_EQ(device.step(5000), 5000u);
        expectPlayed(device, 5000, 2, fact.format.mChannelsPerFrame);
    }
}

TEST(DeviceOutput, PlaysExactlyForAnySliceAndLimit)
{
    for (const UInt32 slice : {1, 64, 512, 1156, 1157, 2048, 8192})
        for (const UInt32 limit : {1, 100, 1156, 4096}) {
            if (slice == 8192 && limit == 1) continue;
            SCOPED_TRACE("slice " + std::to_string(slice) + ", limit " + std::to_string(limit));
            SteppedDevice device(48000, 2, slice);
            Playing playing(device, canonical(48000, 2));
            ASSERT_EQ(playing.unit.setLimit(limit), noErr);
            playing.start();
            const UInt32 frames = slice * 2 + 3;
            ASSERT_EQ(device.step(frames), frames);
            expectPlayed(device, frames, 2, 2);
            Float64 next = 0;
            for (const Request& request : playing.feeder.requests) {
                ASSERT_LE(request.frames, limit);
                ASSERT_EQ(request.time.mSampleTime, next);
                next += request.frames;
            }
            EXPECT_EQ(next, frames);
        }
}

TEST(DeviceOutput, CallbackGetsTimeAndMemory)
{
    SteppedDevice device(44100, 2, 512);
    Playing playing(device, pcm(44100, 2, 16, isSigned | isPacked));
    playing.start();
    const UInt64 before = AudioGetCurrentHostTime();
    ASSERT_EQ(device.step(1024), 1024u);
    ASSERT_EQ(playing.feeder.requests.size(), 2u);
    const Request& first = playing.feeder.requests[0];
    EXPECT_EQ(first.bus, 0u);
    EXPECT_EQ(first.frames, 512u);
    EXPECT_EQ(first.buffers, 1u);
    EXPECT_EQ(first.channels, 2u);
    EXPECT_EQ(first.bytes, 2048u);
    EXPECT_EQ(first.time.mSampleTime, 0);
    EXPECT_TRUE(first.time.mFlags & kAudioTimeStampSampleTimeValid);
    EXPECT_TRUE(first.time.mFlags & kAudioTimeStampHostTimeValid);
    EXPECT_GE(first.time.mHostTime, before) << "the time of the output";
    EXPECT_EQ(playing.feeder.requests[1].time.mSampleTime, 512);
}

TEST(DeviceOutput, SampleTimeStartsAtZeroUnlessSwitchedOff)
{
    SteppedDevice device(44100, 2, 100);
    Playing playing(device, canonical(44100, 2));
    playing.start();
    device.step(300);
    ASSERT_EQ(AudioOutputUnitStop(playing.unit), noErr);
    EXPECT_EQ(device.step(100), 0u);
    ASSERT_EQ(AudioOutputUnitStart(playing.unit), noErr);
    device.step(100);
    EXPECT_EQ(playing.feeder.requests.back().time.mSampleTime, 0);
    ASSERT_EQ(AudioOutputUnitStop(playing.unit), noErr);
    ASSERT_EQ(playing.unit.set<UInt32>(2007, 0, 0, 0), noErr);
    ASSERT_EQ(AudioOutputUnitStart(playing.unit), noErr);
    device.step(100);
    EXPECT_EQ(playing.feeder.requests.back().time.mSampleTime, 100);
}

TEST(DeviceOutput, AppliesTheChannelMap)
{
    using Map = std::vector<SInt32>;
    // clang-format off
    const struct { Map map; SInt32 plays[4]; const char* why; } facts[] = {
        {{0, 1, -1, -1}, {0, 1, -1, -1},   "identity"},
        {{1, 0, -1, -1}, {1, 0, -1, -1},   "swapped"},
        {{-1, -1, 0, 1}, {-1, -1, 0, 1},   "on the last two"},
        {{0, 0, 0, 0},   {0, 0, 0, 0},     "one to all"},
        {{-1, -1, -1, -1}, {-1, -1, -1, -1}, "silent"},
        {{2, 1, 0x7FFFFFFF, 0}, {-1, 1, -1, 0}, "missing source channels are silent"},
        {{1},            {1, -1, -1, -1},  "short"},
        {{1, 0, 1, 0, 1, 0}, {1, 0, 1, 0}, "long"},
    };
    // clang-format on
    SteppedDevice device(44100, 4, 64);
    Playing playing(device, canonical(44100, 2));
    playing.start();
    UInt32 at = 0;
    for (const auto& fact : facts) {
        ASSERT_EQ(AudioUnitSetProperty(playing.unit, 2002, 2, 0, fact.map.data(),
                                       static_cast<UInt32>(fact.map.size() * 4)),
                  noErr)
            << "while running";
        device.played.clear();
        ASSERT_EQ(device.step(64), 64u);
        for (UInt32 i = 0; i < 64 * 4; ++i) {
            const SInt32 source = fact.plays[i % 4];
            ASSERT_EQ(device.played[i], source < 0 ? 0 : noise(at + i / 4, static_cast<UInt32>(source)))
                << fact.why << ", " << i;
        }
        at += 64;
    }
    ASSERT_EQ(AudioUnitSetProperty(playing.unit, 2002, 2, 0, nullptr, 0), noErr);
    device.played.clear();
    device.step(64);
    EXPECT_EQ(device.played[5], noise(at + 1, 1)) << "removed: the same channels again";
}

float one(Float64, UInt32) { return 1; }

TEST(DeviceOutput, VolumeRampsToItsValue)
{
    SteppedDevice device(44100, 2, 100);
    Playing playing(device, canonical(44100, 2));
    Feeder ones(canonical(44100, 2), one);
    ASSERT_EQ(playing.unit.setCallback(Feeder::callback, &ones), noErr);
    playing.start();
    device.step(100);
    EXPECT_EQ(device.played, std::vector<float>(200, 1.0f)) << "at 1 samples are unchanged";
    ASSERT_EQ(AudioUnitSetParameter(playing.unit, kHALOutputParam_Volume, 0, 0, 0.5f, 0), noErr);
    device.played.clear();
    device.step(100);
    for (UInt32 i = 0; i < 100; ++i) ASSERT_NEAR(device.played[i * 2], 1 - 0.5 * (i + 1) / 512, 1e-6) << i;
    device.step(412);
    device.played.clear();
    device.step(100);
    EXPECT_EQ(device.played, std::vector<float>(200, 0.5f));
    ASSERT_EQ(AudioOutputUnitStop(playing.unit), noErr);
    ASSERT_EQ(AudioUnitSetParameter(playing.unit, kHALOutputParam_Volume, 0, 0, 0, 0), noErr);
    ASSERT_EQ(AudioOutputUnitStart(playing.unit), noErr);
    device.played.clear();
    device.step(100);
    EXPECT_EQ(device.played, std::vector<float>(200, 0.0f)) << "changed while stopped: no ramp";
    ASSERT_EQ(AudioUnitSetParameter(playing.unit, kHALOutputParam_Volume, 0, 0, 1, 0), noErr);
    device.step(512);
    device.played.clear();
    device.step(100);
    EXPECT_EQ(device.played, std::vector<float>(200, 1.0f)) << "back at 1, exact again";
}

TEST(DeviceOutput, VolumeChangeMakesNoClickForAnySlice)
{
    for (UInt32 slice : {1u, 16u, 64u, 512u, 600u}) {
        SCOPED_TRACE(slice);
        SteppedDevice device(44100, 2, slice);
        Playing playing(device, canonical(44100, 2));
        Feeder ones(canonical(44100, 2), one);
        ASSERT_EQ(playing.unit.setCallback(Feeder::callback, &ones), noErr);
        playing.start();
        device.step(7);
        // Each change of the volume interrupts the ramp of the previous change.
        for (Float32 volume : {0.0f, 1.0f, 0.25f}) {
            ASSERT_EQ(AudioUnitSetParameter(playing.unit, kHALOutputParam_Volume, 0, 0, volume, 0), noErr);
            device.step(101);
        }
        device.step(512);
        for (std::size_t i = 2; i < device.played.size(); ++i)
            ASSERT_LE(std::abs(device.played[i] - device.played[i - 2]), 1.0f / 512 + 1e-6f) << i;
        EXPECT_EQ(device.played.back(), 0.25f);
    }
}

TEST(DeviceOutput, IsSilentWithoutASourceAndKeepsTheError)
{
    SteppedDevice device(44100, 2, 256);
    Playing playing(device, canonical(44100, 2));
    playing.start();
    const auto lastError = [&] {
        return playing.unit.get<OSStatus>(kAudioUnitProperty_LastRenderError, 0, 0);
    };
    playing.feeder.status = -17;
    device.step(256);
    EXPECT_EQ(device.played, std::vector<float>(512, 0.0f));
    playing.feeder.status = noErr;
    device.played.clear();
    device.step(256);
    EXPECT_EQ(device.played[2], noise(257, 0)) << "the next slice plays, and its time has advanced";
    EXPECT_EQ(lastError(), -17) << "kept until it is read";
    EXPECT_EQ(lastError(), noErr);
    ASSERT_EQ(playing.unit.setCallback(nullptr, nullptr), noErr);
    device.played.clear();
    device.step(256);
    EXPECT_EQ(device.played, std::vector<float>(512, 0.0f));
    EXPECT_EQ(lastError(), kAudioUnitErr_NoConnection);
}

TEST(DeviceOutput, SumsTwoUnitsOnADevice)
{
    SteppedDevice device(44100, 2, 128);
    Playing one(device, canonical(44100, 2)), two(device, canonical(44100, 1));
    one.start();
    two.start();
    ASSERT_EQ(device.step(128), 128u);
    for (UInt32 i = 0; i < 256; ++i)
        ASSERT_EQ(device.played[i], i % 2 ? noise(i / 2, 1) : noise(i / 2, 0) + noise(i / 2, 0)) << i;
}

TEST(DeviceOutput, DisabledOutputDoesNotPull)
{
    SteppedDevice device(44100, 2, 128);
    Playing playing(device, canonical(44100, 2));
    ASSERT_EQ(playing.unit.set<UInt32>(2003, 2, 0, 0), noErr);
    EXPECT_EQ(playing.unit.get<UInt32>(2006, 2, 0), 0u);
    playing.start();
    ASSERT_EQ(device.step(128), 128u);
    EXPECT_EQ(playing.feeder.calls, 0);
    EXPECT_EQ(device.played, std::vector<float>(256, 0.0f));
}

TEST(DeviceOutput, RendersForItsDeviceOnly)
{
    SteppedDevice device(44100, 2, 128);
    Playing playing(device, canonical(44100, 2));
    playing.start();
    List list(canonical(44100, 2), 128);
    const AudioTimeStamp time = sampleTime(0);
    EXPECT_EQ(AudioUnitRender(playing.unit, nullptr, &time, 0, 128, list.get()),
              kAudioUnitErr_CannotDoInCurrentContext);
    EXPECT_EQ(AudioUnitRender(playing.unit, nullptr, &time, 1, 128, list.get()),
              kAudioUnitErr_CannotDoInCurrentContext);
    EXPECT_EQ(AudioUnitRender(playing.unit, nullptr, &time, 2, 128, list.get()),
              kAudioUnitErr_InvalidElement);
    ASSERT_EQ(device.step(128), 128u);
    expectPlayed(device, 128, 2, 2);
}

TEST(DeviceOutput, MovesToTheSelectedDeviceWhileRunning)
{
    SteppedDevice first(44100, 2, 128), second(44100, 4, 256);
    Playing playing(first, canonical(44100, 2));
    playing.start();
    ASSERT_EQ(first.step(128), 128u);
    ASSERT_EQ(playing.unit.set<AudioDeviceID>(2000, 0, 0, second.id()), noErr);
    EXPECT_EQ(playing.unit.get<UInt32>(2001, 0, 0), 1u);
    EXPECT_EQ(first.step(128), 0u) << "detached from the first";
    ASSERT_EQ(second.step(256), 256u);
    for (UInt32 i = 0; i < 256; ++i) {
        ASSERT_EQ(second.played[i * 4 + 1], noise(128 + i, 1)) << "the client's frames continue";
        ASSERT_EQ(second.played[i * 4 + 2], 0);
    }
    KVXPlatformRefuseStart(first.id(), kAudioHardwareUnspecifiedError);
    EXPECT_EQ(playing.unit.set<AudioDeviceID>(2000, 0, 0, first.id()), kAudioHardwareUnspecifiedError);
    EXPECT_EQ(playing.unit.get<UInt32>(2001, 0, 0), 0u);
    EXPECT_EQ(playing.unit.set<AudioDeviceID>(2000, 0, 0, second.id()), noErr)
        << "back on the second, running";
    EXPECT_EQ(playing.unit.get<UInt32>(2001, 0, 0), 1u);
    second.played.clear();
    ASSERT_EQ(second.step(256), 256u);
    EXPECT_EQ(second.played[0], noise(384, 0));
}

struct Mover {
    const Unit* unit;
    AudioDeviceID to;
    static OSStatus callback(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32,
                             UInt32, AudioBufferList*)
    {
        auto& self = *static_cast<Mover*>(context);
        EXPECT_EQ(self.unit->set<AudioDeviceID>(2000, 0, 0, self.to), noErr);
        return noErr;
    }
};

TEST(DeviceOutput, MovesSoonAfterItsCallbackSelectsADevice)
{
    SteppedDevice first(44100, 2, 128), second(44100, 2, 128);
    Playing playing(first, canonical(44100, 2));
    Mover mover{&playing.unit, second.id()};
    ASSERT_EQ(playing.unit.setCallback(Mover::callback, &mover), noErr);
    playing.start();
    EXPECT_GE(first.step(128), 128u);
    EXPECT_TRUE(eventually([&] { return second.step(128) == 128; }));
    EXPECT_EQ(first.step(128), 0u);
}

} // namespace
