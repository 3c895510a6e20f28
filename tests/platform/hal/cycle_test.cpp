// I/O cycles: what a procedure receives, and how the outputs of several procedures are mixed.
#include "tests/platform/hal/test_device.h"

#include <cmath>
#include <memory>
#include <random>

namespace {

using namespace haltest;

TEST(Cycle, RunsWholeSlicesThenTheRest)
{
    const struct {
        uint32_t frames;
        std::vector<UInt32> slices;
    } facts[] = {
        {0, {}}, {1, {1}}, {63, {63}}, {64, {64}}, {65, {64, 1}}, {200, {64, 64, 64, 8}},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.frames);
        Device device;
        std::vector<UInt32> slices;
        Procedure procedure(device, [&](const Call& call) { slices.push_back(call.frames()); });
        ASSERT_EQ(procedure.start(), noErr);
        EXPECT_EQ(KVXPlatformStep(device, fact.frames), fact.frames);
        EXPECT_EQ(slices, fact.slices);
    }
}

TEST(Cycle, GivesEachProcedureASilentSlice)
{
    Device device;
    std::vector<float*> buffers;
    const auto check = [&](const Call& call) {
        ASSERT_EQ(call.output->mNumberBuffers, 1u) << "one interleaved buffer for each stream";
        EXPECT_EQ(call.channels(), 2u);
        EXPECT_EQ(call.output->mBuffers[0].mDataByteSize, 64u * 2 * 4);
        EXPECT_TRUE(std::all_of(call.data(), call.data() + call.samples(), [](float s) { return s == 0; }));
        call.fill(0.5f); // no other procedure may receive these samples in its buffer
        ASSERT_NE(call.input, nullptr);
        EXPECT_EQ(call.input->mNumberBuffers, 0u) << "a device without input";
    };
    Procedure first(device, check), second(device, check);
    first.start();
    second.start();
    KVXPlatformStep(device, 3 * 64);
    EXPECT_EQ(first.calls(), 3);
    EXPECT_EQ(second.calls(), 3);
}

TEST(Cycle, PassesTimeStamps)
{
    Device device;
    std::vector<AudioTimeStamp> now, output, input;
    Procedure procedure(device, [&](const Call& call) {
        EXPECT_EQ(call.device, AudioDeviceID{device});
        now.push_back(*call.now);
        output.push_back(*call.outputTime);
        input.push_back(*call.inputTime);
    });
    procedure.start();
    const UInt64 before = AudioGetCurrentHostTime();
    KVXPlatformStep(device, 64 + 64 + 10);
    ASSERT_EQ(now.size(), 3u);
    const Float64 begin = now[0].mSampleTime;
    for (std::size_t i = 0; i < now.size(); ++i) {
        SCOPED_TRACE(i);
        const UInt32 valid = kAudioTimeStampSampleTimeValid | kAudioTimeStampHostTimeValid;
        EXPECT_EQ(now[i].mFlags & valid, valid);
        EXPECT_EQ(output[i].mFlags & valid, valid);
        EXPECT_EQ(now[i].mSampleTime, begin + 64.0 * static_cast<double>(i))
            << "no frame is skipped or repeated";
        EXPECT_GE(now[i].mHostTime, i ? now[i - 1].mHostTime : before);
        EXPECT_GT(output[i].mSampleTime, now[i].mSampleTime) << "a slice is output after it is rendered";
        EXPECT_GT(output[i].mHostTime, now[i].mHostTime);
        const AudioTimeStamp none = {};
        EXPECT_EQ(std::memcmp(&input[i], &none, sizeof none), 0) << "without input, no input time";
    }
}

TEST(Cycle, KeepsASingleProceduresSamplesExact)
{
    Device device;
    std::mt19937 bits(1);
    std::vector<float> written;
    Procedure procedure(device, [&](const Call& call) {
        for (UInt32 i = 0; i < call.samples(); ++i) {
            float sample;
            do {
                const UInt32 word = static_cast<UInt32>(bits());
                std::memcpy(&sample, &word, sizeof sample);
            } while (!std::isfinite(sample)); // finite samples include the smallest and the largest floats
            call.data()[i] = sample;
            written.push_back(sample);
        }
    });
    Recording recording(device);
    procedure.start();
    KVXPlatformStep(device, 10000);
    ASSERT_EQ(recording.samples.size(), written.size());
    EXPECT_EQ(std::memcmp(recording.samples.data(), written.data(), written.size() * sizeof(float)), 0);
}

TEST(Cycle, AddsProcedures)
{
    Device device;
    Procedure a(device, [](const Call& call) { call.fill(0.5f); });
    Procedure b(device, [](const Call& call) { call.fill(0.25f); });
    Procedure c(device, [](const Call& call) {
        for (UInt32 i = 0; i < call.samples(); ++i) call.data()[i] = static_cast<float>(i % 2);
    });
    Recording recording(device);
    for (Procedure* each : {&a, &b, &c}) each->start();
    KVXPlatformStep(device, 100);
    ASSERT_EQ(recording.samples.size(), 200u);
    for (std::size_t i = 0; i < recording.samples.size(); ++i)
        ASSERT_EQ(recording.samples[i], 0.75f + static_cast<float>(i % 2)) << i;
}

TEST(Cycle, AddsAThousandProcedures)
{
    Device device;
    std::vector<std::unique_ptr<Procedure>> procedures;
    for (int i = 0; i < 1000; ++i) {
        procedures.push_back(std::make_unique<Procedure>(device, [](const Call& call) { call.fill(1.0f); }));
        ASSERT_EQ(procedures.back()->start(), noErr) << i;
    }
    Recording recording(device);
    KVXPlatformStep(device, 64);
    ASSERT_EQ(recording.samples.size(), 128u);
    for (float sample : recording.samples) ASSERT_EQ(sample, 1000.0f);
    procedures.clear();
    EXPECT_EQ(KVXPlatformStep(device, 64), 0u) << "no procedure is started";
}

TEST(Cycle, DoesNotRunWithoutAStart)
{
    Device device;
    Procedure procedure(device, [](const Call&) {});
    Recording recording(device);
    EXPECT_EQ(KVXPlatformStep(device, 1000), 0u) << "an added procedure is not started";
    procedure.start();
    EXPECT_EQ(KVXPlatformStep(device, 100), 100u);
    procedure.stop();
    EXPECT_EQ(KVXPlatformStep(device, 1000), 0u);
    EXPECT_EQ(recording.samples.size(), 200u);
}

TEST(Cycle, RunsWithoutAProcedureIfTheDeviceIsStarted)
{
    Device device;
    Recording recording(device);
    ASSERT_EQ(AudioDeviceStart(device, nullptr), noErr);
    EXPECT_EQ(KVXPlatformStep(device, 100), 100u);
    EXPECT_EQ(recording.samples, std::vector<float>(200, 0.0f));
    ASSERT_EQ(AudioDeviceStop(device, nullptr), noErr);
    EXPECT_EQ(KVXPlatformStep(device, 100), 0u);
}

TEST(Cycle, SupportsAnyNumberOfChannelsAndAnySlice)
{
    for (uint32_t channels : {1u, 2u, 3u, 6u, 8u})
        for (uint32_t slice : {1u, 15u, 512u, 4096u}) {
            SCOPED_TRACE(std::to_string(channels) + " channels, slices of " + std::to_string(slice));
            KVXSimulatedDevice description = Device::stepped();
            description.outputChannels = channels;
            description.sliceFrames = slice;
            Device device(description);
            float next = 0;
            Procedure procedure(device, [&](const Call& call) {
                EXPECT_EQ(call.channels(), channels);
                EXPECT_LE(call.frames(), slice);
                for (UInt32 i = 0; i < call.samples(); ++i) call.data()[i] = next++;
            });
            Recording recording(device);
            procedure.start();
            KVXPlatformStep(device, 1000);
            ASSERT_EQ(recording.samples.size(), 1000u * channels);
            for (std::size_t i = 0; i < recording.samples.size(); ++i)
                ASSERT_EQ(recording.samples[i], static_cast<float>(i));
        }
}

TEST(Cycle, AppliesNewSettingsBetweenTwoSlices)
{
    Device device;
    std::vector<std::pair<UInt32, UInt32>> slices;
    Procedure procedure(device,
                        [&](const Call& call) { slices.emplace_back(call.channels(), call.frames()); });
    procedure.start();
    KVXPlatformStep(device, 64);
    ASSERT_EQ(KVXPlatformConfigureDevice(device, 48000, 0, 100), 0) << "zero keeps the channels";
    KVXPlatformStep(device, 100);
    ASSERT_EQ(KVXPlatformConfigureDevice(device, 0, 1, 0), 0);
    KVXPlatformStep(device, 100);
    const std::vector<std::pair<UInt32, UInt32>> expected = {{2, 64}, {2, 100}, {1, 100}};
    EXPECT_EQ(slices, expected);
    EXPECT_EQ(get<Float64>(device, address(kAudioDevicePropertyNominalSampleRate)), 48000.0);
}

} // namespace
