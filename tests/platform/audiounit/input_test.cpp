// Tests the device's input through the HAL unit, which is off by default and rendered by the input callback
// in each I/O cycle.
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace {

using namespace test;

AudioDeviceID defaultInput()
{
    const AudioObjectPropertyAddress address = {kAudioHardwarePropertyDefaultInputDevice,
                                                kAudioObjectPropertyScopeGlobal, 0};
    AudioDeviceID device = 0;
    UInt32 size = sizeof device;
    AudioObjectGetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, &size, &device);
    return device;
}

/// An input callback that renders the device's input.
struct InputReader {
    explicit InputReader(AudioUnit u) : unit(u) {}
    AudioUnit unit;
    std::atomic<int> calls{0};
    OSStatus status = -1;
    OSStatus tooMany = -1, wrongBus = -1;
    UInt32 frames = 0, bus = 0;
    bool hadList = true;
    std::vector<float> samplesRead;

    static OSStatus callback(void* context, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                             UInt32 bus, UInt32 frames, AudioBufferList* list)
    {
        auto& self = *static_cast<InputReader*>(context);
        self.frames = frames;
        self.bus = bus;
        self.hadList = list != nullptr;
        List own(interleaved(44100, 2), frames);
        self.wrongBus = AudioUnitRender(self.unit, flags, time, 0, frames, own.get());
        self.tooMany = AudioUnitRender(self.unit, flags, time, 1, frames + 1, own.get());
        own.restore();
        self.status = AudioUnitRender(self.unit, flags, time, 1, frames, own.get());
        const float* samples = static_cast<const float*>(own[0].mData);
        if (self.calls == 0) self.samplesRead.assign(samples, samples + frames * 2);
        ++self.calls;
        return noErr;
    }
};

TEST(Input, IsRenderedInsideTheCycle)
{
    const AudioDeviceID device = defaultInput();
    ASSERT_NE(device, 0u);
    const Unit unit('ahal');
    InputReader reader(unit);
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device), noErr);
    EXPECT_EQ(unit.get<UInt32>(kAudioOutputUnitProperty_HasIO, 1, 1), 0u);
    ASSERT_EQ(unit.set<UInt32>(kAudioOutputUnitProperty_EnableIO, 1, 1, 1), noErr);
    ASSERT_EQ(unit.set<UInt32>(kAudioOutputUnitProperty_EnableIO, 2, 0, 0), noErr);
    EXPECT_EQ(unit.get<UInt32>(kAudioOutputUnitProperty_HasIO, 1, 1), 1u);
    EXPECT_EQ(unit.get<UInt32>(kAudioOutputUnitProperty_HasIO, 2, 0), 0u);
    EXPECT_GE(unit.get<AudioStreamBasicDescription>(8, 1, 1).mChannelsPerFrame, 1u)
        << "the device's channels";
    const Float64 rate = unit.get<Float64>(2, 1, 1);
    ASSERT_EQ(unit.setFormat(2, interleaved(rate, 2), 1), noErr);
    const AURenderCallbackStruct callback = {InputReader::callback, &reader};
    ASSERT_EQ(unit.set(kAudioOutputUnitProperty_SetInputCallback, 0, 0, callback), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    ASSERT_TRUE(eventually([&] { return reader.calls > 2; }));
    ASSERT_EQ(AudioOutputUnitStop(unit), noErr);
    EXPECT_EQ(reader.status, noErr);
    EXPECT_EQ(reader.bus, 1u);
    EXPECT_FALSE(reader.hadList) << "the callback supplies the list when it renders";
    EXPECT_EQ(reader.tooMany, kAudioUnitErr_TooManyFramesToProcess);
    EXPECT_EQ(reader.wrongBus, kAudioUnitErr_CannotDoInCurrentContext);
    EXPECT_EQ(reader.samplesRead, std::vector<float>(reader.frames * 2, 0.0f))
        << "the simulated input is silent";
    List list(interleaved(rate, 2), 64);
    const AudioTimeStamp time = sampleTime(0);
    EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 1, 64, list.get()),
              kAudioUnitErr_CannotDoInCurrentContext);
}

TEST(Input, CallbackCannotBeRead)
{
    for (const OSType subType : {'ahal', 'def ', 'sys '}) {
        SCOPED_TRACE(subType);
        const Unit unit(subType);
        AURenderCallbackStruct callback;
        UInt32 size = sizeof callback;
        EXPECT_EQ(
            AudioUnitGetProperty(unit, kAudioOutputUnitProperty_SetInputCallback, 0, 0, &callback, &size),
            kAudioUnitErr_InvalidProperty);
    }
}

TEST(Input, OtherRateThanTheDevicesIsRefused)
{
    const Unit unit('ahal');
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, defaultInput()), noErr);
    ASSERT_EQ(unit.set<UInt32>(kAudioOutputUnitProperty_EnableIO, 1, 1, 1), noErr);
    ASSERT_EQ(unit.setFormat(2, canonical(unit.get<Float64>(2, 1, 1) * 2, 1), 1), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(AudioOutputUnitStart(unit), kAudioUnitErr_FormatNotSupported);
}

} // namespace
