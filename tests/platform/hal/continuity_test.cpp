// A change of settings neither loses nor repeats a frame. The test's procedure writes a running count, which
// must reach the device's output without a gap.
#include "tests/platform/hal/test_device.h"

namespace {

using namespace haltest;

/// Procedure body that writes the samples 0, 1, 2, … and checks that its time stamps agree with its frames.
struct Counter {
    float next = 0; // the count is exact in a float, because the test plays fewer than 2^24 frames
    double time = -1;
    int breaks = 0;
    std::atomic<UInt32> written{0};

    void operator()(const Call& call)
    {
        if (time >= 0 && call.now->mSampleTime != time) ++breaks;
        if (call.outputTime->mSampleTime != call.now->mSampleTime + call.frames()) ++breaks;
        time = call.now->mSampleTime + call.frames();
        for (UInt32 i = 0; i < call.frames(); ++i, ++next)
            for (UInt32 c = 0; c < call.channels(); ++c) call.data()[i * call.channels() + c] = next;
        written += call.frames();
    }
};

void expectCount(const std::vector<float>& samples, std::size_t channels)
{
    ASSERT_FALSE(samples.empty());
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(samples[i], static_cast<float>(i / channels)) << "sample " << i;
}

constexpr double rates[] = {48000, 12345, 192000, 1000, 44100};
constexpr UInt32 slices[] = {1, 512, 17, 4096, 64};

TEST(Continuity, SteppedDeviceLosesAndRepeatsNothing)
{
    Device device;
    Counter counter;
    Recording recording(device);
    Procedure procedure(device, [&](const Call& call) { counter(call); });
    ASSERT_EQ(procedure.start(), noErr);
    UInt32 stepped = 0;
    for (UInt32 round = 0; round < 50; ++round) {
        if (round % 2) ASSERT_EQ(set(device, address('fsiz'), slices[round / 2 % 5]), noErr);
        if (round % 3 == 0) ASSERT_EQ(set(device, address('nsrt'), rates[round / 3 % 5]), noErr);
        stepped += KVXPlatformStep(device, 100 + round);
    }
    EXPECT_EQ(counter.breaks, 0);
    EXPECT_EQ(counter.written, stepped);
    ASSERT_EQ(recording.samples.size(), stepped * 2);
    expectCount(recording.samples, 2);
}

TEST(Continuity, PacedDeviceLosesAndRepeatsNothing)
{
    Device device(Device::paced());
    Counter counter;
    Recording recording(device);
    {
        Procedure procedure(device, [&](const Call& call) { counter(call); });
        ASSERT_EQ(procedure.start(), noErr);
        for (UInt32 round = 0; round < 20; ++round) {
            const UInt32 before = counter.written;
            if (round % 2)
                ASSERT_EQ(set(device, address('fsiz'), std::min(slices[round / 2 % 5], UInt32{512})), noErr);
            if (round % 3 == 0)
                ASSERT_EQ(set(device, address('nsrt'), std::max(rates[round / 3 % 5], 12345.0)), noErr);
            waitFor([&] { return counter.written > before; });
        }
        ASSERT_EQ(procedure.stop(), noErr);
    }
    KVXPlatformSetStepped(device, 1); // the call returns after the timer thread's last slice
    EXPECT_EQ(counter.breaks, 0);
    expectCount(recording.samples, 2);
}

} // namespace
