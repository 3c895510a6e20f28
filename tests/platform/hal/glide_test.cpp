// A change of volume makes no click, at any slice size and after any earlier change of volume.
#include "tests/platform/hal/test_device.h"

#include <cmath>

namespace {

using namespace haltest;

constexpr auto output = kAudioDevicePropertyScopeOutput;
constexpr UInt32 glideFrames = 512;
constexpr float rounding = 1e-6f;

KVXSimulatedDevice sliced(uint32_t frames)
{
    KVXSimulatedDevice description = Device::stepped();
    description.sliceFrames = frames;
    return description;
}

/// The largest difference between neighbouring samples of a channel.
float largestJump(const std::vector<float>& samples, std::size_t channel, std::size_t channels)
{
    float largest = 0;
    for (std::size_t i = channel + channels; i < samples.size(); i += channels)
        largest = std::max(largest, std::fabs(samples[i] - samples[i - channels]));
    return largest;
}

TEST(Glide, TakesTheSameTimeAtAnySliceSize)
{
    std::vector<float> first;
    for (uint32_t slice : {1u, 16u, 64u, 512u, 8192u})
        for (uint32_t step : {1024u, 7u}) {
            SCOPED_TRACE(std::to_string(slice) + " in steps of " + std::to_string(step));
            Device device(sliced(slice));
            Procedure procedure(device, [](const Call& call) { call.fill(1); });
            Recording recording(device);
            procedure.start();
            KVXPlatformStep(device, 3);
            ASSERT_EQ(set<UInt32>(device, address('mute', output, 0), 1), noErr);
            for (uint32_t done = 0; done < 600; done += step) KVXPlatformStep(device, step);
            EXPECT_EQ(recording.samples[2 * 2], 1.0f);
            EXPECT_EQ(recording.samples[2 * (3 + glideFrames - 1)], 0.0f) << "reached after its frames";
            EXPECT_GT(recording.samples[2 * (3 + glideFrames - 2)], 0.0f) << "and not before";
            EXPECT_LE(largestJump(recording.samples, 0, 2), 1.0f / glideFrames + rounding);
            recording.samples.resize(2 * 600);
            if (first.empty()) first = recording.samples;
            EXPECT_EQ(recording.samples, first) << "the same to the bit";
        }
}

TEST(Glide, ReversesWithoutAJump)
{
    for (uint32_t slice : {1u, 16u, 64u, 512u}) {
        SCOPED_TRACE(slice);
        Device device(sliced(slice));
        Procedure procedure(device, [](const Call& call) { call.fill(1); });
        Recording recording(device);
        procedure.start();
        KVXPlatformStep(device, 64);
        // Each volume is set before the glide to the former volume has ended.
        for (float scalar : {0.0f, 1.0f, 0.5f, 0.9f, 0.0f, 1.0f}) {
            ASSERT_EQ(set(device, address('volm', output, 2), scalar), noErr);
            KVXPlatformStep(device, 101);
        }
        KVXPlatformStep(device, 2 * glideFrames);
        EXPECT_LE(largestJump(recording.samples, 1, 2), 1.0f / glideFrames + rounding);
        EXPECT_EQ(largestJump(recording.samples, 0, 2), 0.0f) << "the other channel is unchanged";
        EXPECT_EQ(recording.samples.back(), 1.0f) << "full volume is exact";
    }
}

// If a channel is removed and a channel with the same number is added later, the new channel does not glide
// from the removed channel's gain.
TEST(Glide, RestoredChannelStartsAtItsLevel)
{
    Device device;
    Procedure procedure(device, [](const Call& call) { call.fill(1); });
    Recording recording(device);
    procedure.start();
    ASSERT_EQ(set(device, address('volm', output, 2), 0.0f), noErr);
    KVXPlatformStep(device, 64);
    ASSERT_EQ(KVXPlatformConfigureDevice(device, 0, 1, 0), 0);
    KVXPlatformStep(device, 64);
    ASSERT_EQ(KVXPlatformConfigureDevice(device, 0, 2, 0), 0);
    recording.samples.clear();
    KVXPlatformStep(device, 64);
    EXPECT_EQ(recording.samples, std::vector<float>(128, 1.0f));
}

} // namespace
