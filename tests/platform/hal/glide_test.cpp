// A change of volume is no click: however the device's time is sliced, and whatever came before.
#include "tests/platform/hal/bench.h"

#include <cmath>

namespace {

using namespace bench;

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

TEST(Glide, TakesTheSameTimeHoweverItIsSliced)
{
    std::vector<float> first;
    for (uint32_t slice : {1u, 16u, 64u, 512u, 8192u})
        for (uint32_t step : {1024u, 7u}) {
            SCOPED_TRACE(std::to_string(slice) + " in steps of " + std::to_string(step));
            Device device(sliced(slice));
            Procedure procedure(device, [](const Call& call) { call.fill(1); });
            Recording heard(device);
            procedure.start();
            KVXPlatformStep(device, 3);
            ASSERT_EQ(set<UInt32>(device, address('mute', output, 0), 1), noErr);
            for (uint32_t done = 0; done < 600; done += step) KVXPlatformStep(device, step);
            EXPECT_EQ(heard.samples[2 * 2], 1.0f);
            EXPECT_EQ(heard.samples[2 * (3 + glideFrames - 1)], 0.0f) << "there after its frames";
            EXPECT_GT(heard.samples[2 * (3 + glideFrames - 2)], 0.0f) << "and no sooner";
            EXPECT_LE(largestJump(heard.samples, 0, 2), 1.0f / glideFrames + rounding);
            heard.samples.resize(2 * 600);
            if (first.empty()) first = heard.samples;
            EXPECT_EQ(heard.samples, first) << "the same to the bit";
        }
}

TEST(Glide, TurnsRoundWithoutAJump)
{
    for (uint32_t slice : {1u, 16u, 64u, 512u}) {
        SCOPED_TRACE(slice);
        Device device(sliced(slice));
        Procedure procedure(device, [](const Call& call) { call.fill(1); });
        Recording heard(device);
        procedure.start();
        KVXPlatformStep(device, 64);
        for (float scalar : {0.0f, 1.0f, 0.5f, 0.9f, 0.0f, 1.0f}) { // each before the former is there
            ASSERT_EQ(set(device, address('volm', output, 2), scalar), noErr);
            KVXPlatformStep(device, 101);
        }
        KVXPlatformStep(device, 2 * glideFrames);
        EXPECT_LE(largestJump(heard.samples, 1, 2), 1.0f / glideFrames + rounding);
        EXPECT_EQ(largestJump(heard.samples, 0, 2), 0.0f) << "the other channel is as it was";
        EXPECT_EQ(heard.samples.back(), 1.0f) << "full volume changes no bit";
    }
}

// The level of a channel that has gone is no starting point for the next of its number.
TEST(Glide, IsNotInheritedByAChannelThatComesBack)
{
    Device device;
    Procedure procedure(device, [](const Call& call) { call.fill(1); });
    Recording heard(device);
    procedure.start();
    ASSERT_EQ(set(device, address('volm', output, 2), 0.0f), noErr);
    KVXPlatformStep(device, 64);
    ASSERT_EQ(KVXPlatformConfigureDevice(device, 0, 1, 0), 0);
    KVXPlatformStep(device, 64);
    ASSERT_EQ(KVXPlatformConfigureDevice(device, 0, 2, 0), 0);
    heard.samples.clear();
    KVXPlatformStep(device, 64);
    EXPECT_EQ(heard.samples, std::vector<float>(128, 1.0f));
}

} // namespace
