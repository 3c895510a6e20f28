#include "host/kvx/play/file_player.h"
#include "host/kvx/play/session.h"

#include <CoreAudio/CoreAudio.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace {

TEST(FramesRendered, IsRoundedToTheNearest)
{
    const struct {
        std::uint64_t frames;
        double fileRate, rate, deviceRate;
        std::uint64_t rendered;
        const char* why;
    } facts[] = {
        {0, 44100, 1, 44100, 0, "an empty file"},
        {1, 44100, 1, 44100, 1, "one frame"},
        {44101, 44100, 1, 44100, 44101, "rate 1 keeps the number of frames"},
        {100, 44100, 2, 44100, 50, "twice as fast"},
        {101, 44100, 2, 44100, 51, "half a frame is rounded up"},
        {100, 44100, 3, 44100, 33, "a third is rounded down"},
        {100, 44100, 0.5, 44100, 200, "half as fast"},
        {44100, 44100, 1, 48000, 48000, "a different device rate"},
        {44100, 44100, 2, 48000, 24000, "a different rate and device rate"},
        {4294967295u, 192000, 0.04, 192000, 107374182375u, "the longest file at the lowest rate"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::framesRendered(fact.frames, fact.fileRate, fact.rate, fact.deviceRate), fact.rendered)
            << fact.why;
}

TEST(FramesOf, IsRoundedUp)
{
    const struct {
        double seconds, rate;
        std::uint64_t frames;
        const char* why;
    } facts[] = {
        {0, 44100, 0, "no time"},
        {-1, 44100, 0, "a negative time"},
        {1, 44100, 44100, "one second"},
        {1.0 / 44100, 44100, 1, "one frame"},
        {512.0 / 48000, 48000, 512, "a time computed from whole frames"},
        {1234567.0 / 44100, 44100, 1234567, "a long time computed from whole frames"},
        {1.5 / 44100, 44100, 2, "one frame and a half"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::framesOf(fact.seconds, fact.rate), fact.frames) << fact.why;
}

TEST(UndoSinglePrecision, RestoresHundredths)
{
    for (int hundredths = 4; hundredths <= 3200; ++hundredths)
        EXPECT_EQ(kvx::undoSinglePrecision(float(hundredths / 100.0)), hundredths / 100.0);
    const double semitone = 1.0594630943592953;
    EXPECT_EQ(kvx::undoSinglePrecision(semitone), semitone) << "not a hundredth";
}

TEST(Volume, ReturnsFromMuteToTheVolumeBefore)
{
    kvx::Volume volume;
    volume.toggleMute();
    EXPECT_EQ(volume.value, 0.0);
    volume.toggleMute();
    EXPECT_EQ(volume.value, 1.0);
    volume.value = 0.25;
    volume.toggleMute();
    volume.value = 0.05; // a key has raised the volume
    volume.toggleMute();
    EXPECT_EQ(volume.value, 0.0);
    volume.toggleMute();
    EXPECT_EQ(volume.value, 0.05);
}

TEST(Gap, PrintsItsCauseAndTheNextStep)
{
    testing::internal::CaptureStderr();
    kvx::printGap();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "kvx: the sound had gaps: the file could not be read "
                                                      "as fast as it plays; copy it to a faster disk\n");
}

TEST(EndDetector, WaitsForTheRemainingFrames)
{
    kvx::EndDetector detector;
    EXPECT_FALSE(detector.hasEnded(1000, 512)) << "the first call at the end";
    EXPECT_FALSE(detector.hasEnded(1511, 512)) << "one frame is missing";
    EXPECT_TRUE(detector.hasEnded(1512, 512));
}

TEST(EndDetector, StartsAgainAfterReset)
{
    kvx::EndDetector detector;
    EXPECT_FALSE(detector.hasEnded(1000, 512));
    detector.reset();
    EXPECT_FALSE(detector.hasEnded(5000, 512));
    EXPECT_TRUE(detector.hasEnded(5512, 512));
}

TEST(EndDetector, EndsAtOnceWithoutRemainingFrames)
{
    kvx::EndDetector detector;
    EXPECT_TRUE(detector.hasEnded(1000, 0));
}

OSStatus playHalf(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
                  AudioBufferList* output, const AudioTimeStamp*, void*)
{
    auto* const samples = static_cast<float*>(output->mBuffers[0].mData);
    std::fill_n(samples, output->mBuffers[0].mDataByteSize / sizeof(float), -0.5f);
    return noErr;
}

TEST(Meter, MeasuresTheOutputUntilItsDestruction)
{
    KVXSimulatedDevice description = {};
    description.isStepped = 1;
    const KVXDeviceID device = KVXPlatformAddSimulatedDevice(&description);
    ASSERT_NE(device, 0u);
    ASSERT_EQ(AudioDeviceAddIOProc(device, playHalf, nullptr), noErr);
    ASSERT_EQ(AudioDeviceStart(device, playHalf), noErr);
    std::optional<kvx::Meter> meter(device);
    EXPECT_EQ(meter->takePeak(), 0.0f) << "before the first slice";
    ASSERT_EQ(KVXPlatformStep(device, 512), 512u);
    EXPECT_EQ(meter->takePeak(), 0.5f);
    EXPECT_EQ(meter->takePeak(), 0.0f) << "since the last call";
    EXPECT_EQ(meter->frames(), 512u);
    meter.reset();
    EXPECT_EQ(KVXPlatformStep(device, 512), 512u) << "the device no longer calls the meter";
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
}

} // namespace
