// Tests a client at another rate than the device: the output keeps pitch, level, time and length.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace test;

Float64 clientRate;
constexpr Float64 tone = 440, amplitude = 0.5;
constexpr Float64 pi = 3.14159265358979323846;

float sine(Float64 frame, UInt32 channel)
{
    return static_cast<float>(amplitude * std::sin(2 * pi * tone * (frame / clientRate) + channel));
}

constexpr struct {
    Float64 client, device;
} rates[] = {
    {44100, 48000}, {48000, 44100},  {22050, 44100}, {96000, 44100},
    {8000, 48000},  {44100, 192000}, {11025, 8000},
};

/// Returns  the largest difference in frames [from, until) between the played samples and a tone that is
///          computed at the device's rate.
double largestError(const std::vector<float>& played, UInt32 channels, Float64 rate, UInt32 from,
                    UInt32 until)
{
    double worst = 0;
    for (UInt32 frame = from; frame < until; ++frame)
        for (UInt32 c = 0; c < channels; ++c)
            worst = std::max(worst, std::abs(played[frame * channels + c] -
                                             amplitude * std::sin(2 * pi * tone * (frame / rate) + c)));
    return worst;
}

TEST(RateConversion, KeepsPitchLevelAndTime)
{
    for (const auto& rate : rates)
        for (const UInt32 slice : {512, 100, 3000}) {
            SCOPED_TRACE(std::to_string(rate.client) + " to " + std::to_string(rate.device) + ", " +
                         std::to_string(slice));
            clientRate = rate.client;
            SteppedDevice device(rate.device, 2, slice);
            const Unit unit('ahal');
            Feeder feeder(canonical(rate.client, 2), sine);
            ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
            ASSERT_EQ(unit.setFormat(1, canonical(rate.client, 2)), noErr);
            ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
            ASSERT_EQ(AudioUnitInitialize(unit), noErr);
            ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
            const UInt32 frames = 24000;
            ASSERT_EQ(device.step(frames), frames);
            // The output is the same tone at the device's rate, sample by sample, so pitch and level are
            // right and there is no delay or gap.
            EXPECT_LT(largestError(device.played, 2, rate.device, 2000, frames), 1e-3);

            // The client was called for the frames that the device played, plus the look-ahead.
            Float64 next = 0;
            for (const Request& request : feeder.requests) {
                ASSERT_EQ(request.time.mSampleTime, next) << "in order, without a gap";
                ASSERT_LE(request.frames, 1156u);
                next += request.frames;
            }
            const Float64 played = frames * rate.client / rate.device;
            const Float64 ahead = unit.get<Float64>(kAudioUnitProperty_TailTime, 0, 0) * rate.client;
            EXPECT_GT(ahead, 0);
            EXPECT_NEAR(next, played + ahead, 1.001);
        }
}

TEST(RateConversion, DoesNotDrift)
{
    clientRate = 44100;
    SteppedDevice device(48000, 1, 512);
    const Unit unit('ahal');
    Feeder feeder(canonical(44100, 1), sine);
    feeder.mostRequests = 0;
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setFormat(1, canonical(44100, 1)), noErr);
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    const UInt32 frames = 48000 * 5;
    ASSERT_EQ(device.step(frames), frames);
    EXPECT_LT(largestError(device.played, 1, 48000, frames - 5000, frames), 1e-3)
        << "still at the source's time";
    feeder.mostRequests = 1;
    device.step(512);
    ASSERT_EQ(feeder.requests.size(), 1u);
    const Float64 ahead = unit.get<Float64>(kAudioUnitProperty_TailTime, 0, 0) * 44100;
    EXPECT_NEAR(feeder.requests[0].time.mSampleTime, 44100 * 5 + ahead, 1.001)
        << "the frames of the next output";
}

TEST(RateConversion, FailedStartKeepsTheFormerConversion)
{
    SteppedDevice device(48000, 1, 512);
    const Unit unit('ahal');
    ASSERT_EQ(unit.set<AudioDeviceID>(kAudioOutputUnitProperty_CurrentDevice, 0, 0, device.id()), noErr);
    ASSERT_EQ(unit.setFormat(1, canonical(44100, 1)), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStart(unit), noErr);
    ASSERT_EQ(AudioOutputUnitStop(unit), noErr);
    const auto tail = unit.get<Float64>(kAudioUnitProperty_TailTime, 0, 0);
    EXPECT_GT(tail, 0);

    ASSERT_EQ(AudioUnitUninitialize(unit), noErr);
    ASSERT_EQ(unit.setFormat(1, canonical(100, 1)), noErr); // a ratio of 480
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(AudioOutputUnitStart(unit), kAudioUnitErr_FormatNotSupported);
    EXPECT_EQ(unit.get<Float64>(kAudioUnitProperty_TailTime, 0, 0), tail);
    EXPECT_EQ(AudioUnitReset(unit, 0, 0), noErr);
}

TEST(RateConversion, GenericUnitKeepsTheTone)
{
    clientRate = 48000;
    const Unit unit('genr');
    Feeder feeder(pcm(48000, 1, 32, isFloat | isPacked | isBig), sine);
    ASSERT_EQ(unit.setFormat(1, pcm(48000, 1, 32, isFloat | isPacked | isBig)), noErr);
    ASSERT_EQ(unit.setFormat(2, canonical(44100, 1)), noErr);
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    std::vector<float> played;
    for (UInt32 slice = 0; slice < 20; ++slice) {
        List list(canonical(44100, 1), 1156);
        const AudioTimeStamp time = sampleTime(slice * 1156.0);
        ASSERT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 1156, list.get()), noErr);
        const float* samples = static_cast<const float*>(list[0].mData);
        played.insert(played.end(), samples, samples + 1156);
    }
    EXPECT_LT(largestError(played, 1, 44100, 2000, 20 * 1156), 1e-3);

    // The client was called for the frames that were rendered, plus the look-ahead.
    const Request& last = feeder.requests.back();
    const Float64 ahead = unit.get<Float64>(kAudioUnitProperty_TailTime, 0, 0) * 48000;
    EXPECT_GT(ahead, 0);
    EXPECT_NEAR(last.time.mSampleTime + last.frames, 20 * 1156 * 48000.0 / 44100 + ahead, 1.001);
    ASSERT_EQ(AudioUnitUninitialize(unit), noErr);
    EXPECT_NEAR(unit.get<Float64>(kAudioUnitProperty_TailTime, 0, 0) * 48000, ahead, 1e-9);
    ASSERT_EQ(unit.setFormat(2, canonical(48000, 1)), noErr);
    EXPECT_EQ(unit.get<Float64>(kAudioUnitProperty_TailTime, 0, 0), 0) << "at equal rates";
}

float burst(Float64 frame, UInt32) { return frame < 100 ? 1.0f : 0.0f; }

TEST(RateConversion, ResetClearsTheFilter)
{
    const Unit unit('genr');
    Feeder feeder(canonical(44100, 1), burst);
    ASSERT_EQ(unit.setFormat(1, canonical(44100, 1)), noErr);
    ASSERT_EQ(unit.setFormat(2, canonical(48000, 1)), noErr);
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    for (const bool resets : {false, true}) {
        ASSERT_EQ(AudioUnitInitialize(unit), noErr);
        List list(canonical(48000, 1), 64);
        AudioTimeStamp time = sampleTime(0);
        ASSERT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 64, list.get()), noErr);
        ASSERT_NEAR(static_cast<float*>(list[0].mData)[50], 1, 0.1);
        if (resets) {
            ASSERT_EQ(AudioUnitReset(unit, 0, 0), noErr);
        }
        time = sampleTime(64);
        ASSERT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 64, list.get()), noErr);
        // The first pull contains the whole burst of 100 frames, so the rest of the burst is output unless a
        // reset clears it.
        EXPECT_EQ(std::abs(static_cast<float*>(list[0].mData)[20]) > 0.5, !resets);
        ASSERT_EQ(AudioUnitUninitialize(unit), noErr);
    }
}

Float64 origin; // client frame that corresponds to the feeder's frame 0

float noiseFromOrigin(Float64 frame, UInt32 channel) { return noise(origin + frame, channel); }

/// A unit that converts noise from 44,100 Hz to 48,000 Hz in slices of 100 frames. A slice is shorter than
/// the filter.
struct Converting {
    explicit Converting(OSType subType, OSType type = 'auou')
        : drivesDevice(subType == 'ahal'), feeder(canonical(44100, 1), noiseFromOrigin), unit(subType, type)
    {
        EXPECT_EQ(unit.setFormat(1, canonical(44100, 1)), noErr);
        if (drivesDevice)
            EXPECT_EQ(unit.set(kAudioOutputUnitProperty_CurrentDevice, 0, 0, device.id()), noErr);
        else
            EXPECT_EQ(unit.setFormat(2, canonical(48000, 1)), noErr);
        EXPECT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
        EXPECT_EQ(AudioUnitInitialize(unit), noErr);
        if (drivesDevice) EXPECT_EQ(AudioOutputUnitStart(unit), noErr);
    }

    std::vector<float> play(int slices)
    {
        std::vector<float> played;
        for (int slice = 0; slice < slices; ++slice) {
            List list(canonical(48000, 1), 100);
            const float* samples = static_cast<const float*>(list[0].mData);
            if (drivesDevice) {
                device.played.clear();
                EXPECT_EQ(device.step(100), 100u);
                samples = device.played.data();
            } else {
                const AudioTimeStamp time = sampleTime(next);
                EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 100, list.get()), noErr);
            }
            played.insert(played.end(), samples, samples + 100);
            next += 100;
        }
        return played;
    }

    const bool drivesDevice;
    SteppedDevice device{48000, 1, 100};
    Float64 next = 0;
    Feeder feeder;
    // The unit is closed before the device is removed, because a removed device still runs I/O cycles.
    const Unit unit;
};

TEST(RateConversion, IsResetOnce)
{
    const struct {
        OSType subType, type;
    } facts[] = {{'ahal', 'auou'}, {'genr', 'auou'}, {'conv', 'aufc'}};
    for (const auto& fact : facts)
        for (int before = 1; before <= 20; ++before) {
            origin = 0;
            Converting reset(fact.subType, fact.type);
            reset.play(before);
            ASSERT_EQ(AudioUnitReset(reset.unit, 0, 0), noErr);
            reset.feeder.requests.clear();
            const std::vector<float> played = reset.play(30);
            ASSERT_FALSE(reset.feeder.requests.empty());
            origin = reset.feeder.requests[0].time.mSampleTime;
            EXPECT_GT(origin, 0);
            Converting fresh(fact.subType, fact.type);
            EXPECT_EQ(played, fresh.play(30))
                << "like a new unit that begins there, after slices: " << before;
        }
}

} // namespace
