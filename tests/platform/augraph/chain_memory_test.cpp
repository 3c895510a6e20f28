// Tests of the heap use of a file player's chain of units. The use is small at neutral settings; a time-pitch
// engine adds more.
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/augraph/player_chain.h"

#include <gtest/gtest.h>

#include <malloc.h>

namespace {

using namespace test;

constexpr std::size_t mebibyte = 1024 * 1024;

std::size_t allocated()
{
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

std::size_t grownSince(std::size_t before)
{
    const std::size_t now = allocated();
    return now > before ? now - before : 0;
}

const struct {
    UInt32 channels;
    Float64 rate;
    std::size_t most;
} formats[] = {
    {1, 8000, mebibyte},
    {2, 44100, mebibyte},
    {6, 192000, mebibyte},
    {64, 192000, 4 * mebibyte}, // the limit allows for 13 slices of 64 channels, which take 3.7 MiB
};

TEST(ChainMemory, IsSmallAtNeutralSettings)
{
    for (const auto& fact : formats)
        for (const Rates rates : {timePitch, varispeed}) {
            SCOPED_TRACE(testing::Message() << fact.channels << " channels at " << fact.rate);
            SteppedDevice device(fact.rate, fact.channels, 512);
            Sound sound{fact.channels, 100000};
            const std::size_t before = allocated();
            Chain chain({'ahal', fact.channels, 512, 0, rates, fact.rate}, sound);
            chain.set(chain.output, kAudioOutputUnitProperty_CurrentDevice, 0, AudioDeviceID{device.id()});
            chain.initialize();
            ASSERT_EQ(AUGraphStart(chain.graph), noErr);
            device.step(4096);
            const std::size_t taken = grownSince(before);
            EXPECT_LE(taken, fact.most);
            EXPECT_GT(taken, std::size_t{fact.channels} * 1156 * sizeof(float)) << "the count works";
            RecordProperty(std::to_string(fact.channels) + " channels", static_cast<int>(taken));
        }
}

// The length of an input history grows with the sample rate, but a unit at neutral settings has none.
TEST(ChainMemory, IsSmallAtAnyRate)
{
    for (const Float64 rate : {4e5, 1e9, 1e18}) {
        SCOPED_TRACE(rate);
        Sound sound{2, 100000};
        const std::size_t before = allocated();
        Chain chain({'genr', 2, 512, 0, timePitch, rate}, sound);
        chain.set(chain.output, kAudioUnitProperty_StreamFormat, 2, canonical(rate, 2));
        chain.initialize();
        EXPECT_LE(grownSince(before), mebibyte);
    }
}

// The unit is bypassed at first, and a bypassed unit has no rate engine.
TEST(ChainMemory, TheInputHistoryIsAllocatedWithTheRateEngine)
{
    // The input history of 6 channels holds 0.68 s at 192 kHz, rounded up.
    constexpr std::size_t history = 6 * 131072 * sizeof(float);
    Sound sound{6, 100000};
    Chain chain({'genr', 6, 512, 0, timePitch, 192000}, sound);
    chain.set(chain.output, kAudioUnitProperty_StreamFormat, 2, canonical(192000, 6));
    chain.set<UInt32>(chain.pitch, kAudioUnitProperty_BypassEffect, 0, 1);
    chain.initialize();
    const std::size_t before = allocated();
    chain.setParameter(chain.pitch, 0, 0, 1.25f);
    EXPECT_LT(grownSince(before), mebibyte / 16) << "bypassed";
    chain.set<UInt32>(chain.pitch, kAudioUnitProperty_BypassEffect, 0, 0);
    EXPECT_GT(grownSince(before), history);

    const std::size_t withEngine = allocated();
    chain.setParameter(chain.pitch, kNewTimePitchParam_Overlap, 0, 3); // selects another rate engine
    chain.setParameter(chain.pitch, 0, 0, 1);
    EXPECT_LT(grownSince(withEngine), history) << "one history";
    ASSERT_EQ(AUGraphUninitialize(chain.graph), noErr);
    EXPECT_LT(grownSince(before), mebibyte / 16) << "freed";
}

TEST(ChainMemory, AHistoryThatDoesNotFitRefusesTheSettingAndPlaybackGoesOn)
{
    // At this sample rate the input history exceeds the address space.
    const Float64 tooMuch = sizeof(void*) == 4 ? 4e9 : 1e18;
    for (const Float64 rate : {tooMuch, 1e30}) {
        SCOPED_TRACE(rate);
        Sound sound{2, 100000};
        Chain chain({'genr', 2, 512, 0, timePitch, rate}, sound);
        chain.set(chain.output, kAudioUnitProperty_StreamFormat, 2, canonical(rate, 2));
        chain.initialize();
        EXPECT_EQ(AudioUnitSetParameter(chain.graph.unit(chain.pitch), 0, 0, 0, 1.25f, 0), memFullErr);
        List list(canonical(rate, 2), 512);
        list.restore();
        const AudioTimeStamp time = sampleTime(0);
        ASSERT_EQ(AudioUnitRender(chain.graph.unit(chain.output), nullptr, &time, 0, 512, list.get()), noErr);
        for (UInt32 i = 0; i < 512; ++i)
            ASSERT_EQ(static_cast<const float*>(list[0].mData)[i], sample(i, 0)) << "frame " << i;
    }
}

} // namespace
