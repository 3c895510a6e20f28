// Tests of the tick count, and of Delay with and without stepped devices.
#include "platform/carbon/ticks.h"
#include "platform/hal/step.h"

#include <Carbon/OSUtils.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

std::vector<double> advances;
bool isAnySteppedDeviceRunning = false;

} // namespace

bool kvxplatform::hal::advanceSteppedDevices(double seconds)
{
    advances.push_back(seconds);
    return isAnySteppedDeviceRunning;
}

namespace {

using kvxplatform::carbon::nanosecondsIn;
using kvxplatform::carbon::ticksIn;

TEST(Ticks, AreSixtiethsOfASecondRoundedDown)
{
    const struct {
        std::uint64_t nanoseconds, ticks;
        const char* why;
    } facts[] = {
        {0, 0, "start-up"},
        {16666666, 0, "just under a tick"},
        {16666667, 1, "just over"},
        {33333333, 1, "just under two"},
        {33333334, 2, "just over two"},
        {999999999, 59, "just under a second"},
        {1000000000, 60, "a second"},
        {86400000000000, 5184000, "a day"},
        {UINT64_MAX, 1106804644422, "the last 64-bit time, without overflow"},
    };
    for (const auto& fact : facts) EXPECT_EQ(ticksIn(fact.nanoseconds), fact.ticks) << fact.why;
}

TEST(Ticks, LastAtLeastASixtiethOfASecond)
{
    const struct {
        std::uint64_t ticks, nanoseconds;
        const char* why;
    } facts[] = {
        {0, 0, "none"},
        {1, 16666667, "rounded up: the tick count must have moved"},
        {2, 33333334, "rounded up"},
        {3, 50000000, "three are exact"},
        {59, 983333334, "one tick less than a second"},
        {60, 1000000000, "a second"},
        {61, 1016666667, "one tick more than a second"},
        {UINT32_MAX, 71582788250000000, "the longest delay"},
    };
    for (const auto& fact : facts) {
        EXPECT_EQ(nanosecondsIn(fact.ticks), fact.nanoseconds) << fact.why;
        EXPECT_EQ(ticksIn(fact.nanoseconds), fact.ticks) << fact.why;
    }
}

class Delays : public testing::Test {
protected:
    Delays()
    {
        advances.clear();
        isAnySteppedDeviceRunning = false;
    }
};

TEST_F(Delays, WaitForTheirNumberOfTicks)
{
    for (const unsigned long ticks : {0ul, 1ul, 2ul, 5ul}) {
        const UInt32 before = TickCount();
        unsigned long after = 0;
        Delay(ticks, &after);
        EXPECT_GE(after, before + ticks);
        EXPECT_LE(after, TickCount());
    }
}

TEST_F(Delays, AdvanceTheSteppedDevices)
{
    Delay(0, nullptr);
    Delay(1, nullptr);
    Delay(3, nullptr);
    EXPECT_EQ(advances, (std::vector<double>{0.0, 1.0 / 60, 3.0 / 60}));
}

TEST_F(Delays, ReturnAtOnceIfOnlySteppedDevicesRun)
{
    isAnySteppedDeviceRunning = true;
    unsigned long after = 0;
    Delay(0xFFFFFFFF, &after); // a delay of more than two years
    EXPECT_NE(after, 0u);
    Delay(0xFFFFFFFF, nullptr);
    EXPECT_EQ(advances, (std::vector<double>{0xFFFFFFFF / 60.0, 0xFFFFFFFF / 60.0}));
}

} // namespace
