// The drivers of a device (timer thread and steps), and the Delay function.
#include "tests/platform/hal/test_device.h"

#include <Carbon/Carbon.h>

#include <mutex>
#include <thread>

namespace {

using namespace haltest;

TEST(Driver, PacedDeviceKeepsTime)
{
    Device device(Device::paced());
    std::vector<AudioTimeStamp> stamps;
    std::vector<UInt32> frames;
    stamps.reserve(1000);
    frames.reserve(1000);
    Procedure* self = nullptr;
    std::atomic<bool> isDone{false};
    Procedure procedure(device, [&](const Call& call) {
        stamps.push_back(*call.now);
        frames.push_back(call.frames());
        if (stamps.size() == 200) {
            self->stop();
            isDone = true;
        }
    });
    self = &procedure;
    ASSERT_EQ(procedure.start(), noErr);
    waitFor([&] { return isDone.load(); });
    procedure.remove();
    ASSERT_EQ(stamps.size(), 200u);
    const double nanosPerFrame = 1e9 / 44100;
    for (std::size_t i = 0; i < stamps.size(); ++i) {
        ASSERT_EQ(frames[i], 64u);
        const double passed = stamps[i].mSampleTime - stamps[0].mSampleTime;
        ASSERT_EQ(passed, 64.0 * static_cast<double>(i)) << "a late thread loses no frame";
        // After a late slice the next slices come sooner, but no slice comes before its time since the start.
        const double elapsed = static_cast<double>(stamps[i].mHostTime - stamps[0].mHostTime);
        ASSERT_GE(elapsed + 1, (passed - 64) * nanosPerFrame) << i;
    }
}

TEST(Driver, DelayAdvancesASteppedDeviceByItsDuration)
{
    const struct {
        double rate;
        int ticks;
        std::size_t frames;
    } facts[] = {
        {44100, 1, 735}, {44100, 60, 44100}, {48000, 1, 800}, {11025, 1, 183},
        {11025, 4, 735}, {8000, 3, 400},     {22050, 2, 735}, {96000, 60, 96000},
    };
    for (const auto& fact : facts) {
        for (bool isOneByOne : {false, true}) {
            SCOPED_TRACE(std::to_string(fact.rate) + " Hz, " + std::to_string(fact.ticks) + " ticks");
            KVXSimulatedDevice description = Device::stepped();
            description.sampleRate = fact.rate;
            Device device(description);
            Procedure procedure(device, [](const Call&) {});
            Recording recording(device);
            procedure.start();
            for (int i = 0; i < (isOneByOne ? fact.ticks : 1); ++i)
                Delay(isOneByOne ? 1 : static_cast<unsigned long>(fact.ticks), nullptr);
            EXPECT_EQ(recording.samples.size() / 2, fact.frames) << "fractions of frames are carried over";
        }
    }
}

TEST(Driver, DelayStepsOnTheCallingThreadUntilTheLastStop)
{
    Device device;
    const auto here = std::this_thread::get_id();
    Procedure* self = nullptr;
    Procedure procedure(device, [&](const Call&) {
        EXPECT_EQ(std::this_thread::get_id(), here);
        if (self->calls() == 2) self->stop();
    });
    self = &procedure;
    procedure.start();
    Delay(60, nullptr);
    EXPECT_EQ(procedure.calls(), 2);
}

TEST(Driver, DelayReturnsTheTicks)
{
    unsigned long after = 0;
    const UInt32 before = TickCount();
    Delay(2, &after);
    EXPECT_GE(after, before + 2) << "without a running stepped device it waits";
}

TEST(Driver, CanChangeWhileADeviceRuns)
{
    Device device; // a stepped device
    std::atomic<bool> isElsewhere{false};
    const auto here = std::this_thread::get_id();
    std::vector<double> times;
    std::mutex lock;
    Procedure procedure(device, [&](const Call& call) {
        const std::lock_guard<std::mutex> hold(lock);
        times.push_back(call.now->mSampleTime);
        if (std::this_thread::get_id() != here) isElsewhere = true;
    });
    procedure.start();
    KVXPlatformStep(device, 128);
    ASSERT_EQ(KVXPlatformSetStepped(device, 0), 0);
    EXPECT_EQ(KVXPlatformStep(device, 64), 0u) << "the timer runs it";
    waitFor([&] { return isElsewhere.load(); });
    ASSERT_EQ(KVXPlatformSetStepped(device, 1), 0);
    isElsewhere = false;
    EXPECT_EQ(KVXPlatformStep(device, 64), 64u);
    EXPECT_FALSE(isElsewhere);
    for (std::size_t i = 1; i < times.size(); ++i)
        ASSERT_EQ(times[i], times[i - 1] + 64) << "the time continues";
}

} // namespace
