// Tests of absolute times and durations at their limits.
#include <Carbon/Carbon.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

std::uint64_t numberOf(UnsignedWide wide) { return std::uint64_t{wide.hi} << 32 | wide.lo; }

UnsignedWide wideOf(std::uint64_t number)
{
    return {static_cast<UInt32>(number), static_cast<UInt32>(number >> 32)};
}

TEST(Durations, AreMillisecondsAboveZeroAndMicrosecondsBelow)
{
    const struct {
        Duration duration;
        std::uint64_t nanoseconds;
        const char* why;
    } facts[] = {
        {durationNoWait, 0, "none"},
        {durationMillisecond, 1000000, "a millisecond"},
        {durationMicrosecond, 1000, "a microsecond"},
        {-1000, 1000000, "a millisecond in microseconds"},
        {durationSecond, 1000000000, "a second"},
        {durationMinute, 60000000000, "a minute"},
        {durationHour, 3600000000000, "an hour"},
        {durationDay, 86400000000000, "a day"},
        {durationForever - 1, 2147483646000000, "the longest finite one"},
        {durationForever, never, "for ever"},
        {std::numeric_limits<Duration>::min(), 2147483648000, "the longest in microseconds"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_EQ(numberOf(AddDurationToAbsolute(fact.duration, wideOf(0))), fact.nanoseconds);
    }
}

TEST(Durations, AddToAMomentUpToTheLastMoment)
{
    const struct {
        Duration duration;
        std::uint64_t moment, sum;
        const char* why;
    } facts[] = {
        {1, 0xFFFFFFFF, 0x1000F423F, "the carry goes into the upper word"},
        {-1, never - 1000, never, "exactly the last moment"},
        {-1, never - 999, never, "one past the last moment"},
        {1, never, never, "added to the last moment"},
        {durationForever, 5, never, "for ever added to a moment"},
        {0, never, never, "nothing added"},
        {0, 123, 123, "nothing added"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(numberOf(AddDurationToAbsolute(fact.duration, wideOf(fact.moment))), fact.sum) << fact.why;
}

TEST(Waiting, EndsAtOrAfterItsMoment)
{
    for (const Duration wait : {0, -1, -500, 1, 20}) {
        AbsoluteTime end = AddDurationToAbsolute(wait, UpTime());
        EXPECT_EQ(MPDelayUntil(&end), noErr);
        EXPECT_GE(numberOf(UpTime()), numberOf(end));
    }
}

TEST(Waiting, ForAPastMomentEndsAtOnce)
{
    for (const std::uint64_t moment : {std::uint64_t{0}, std::uint64_t{1}, numberOf(UpTime())}) {
        AbsoluteTime past = wideOf(moment);
        EXPECT_EQ(MPDelayUntil(&past), noErr);
        EXPECT_EQ(numberOf(past), moment) << "unchanged";
    }
}

TEST(Waiting, ForNullIsRefused) { EXPECT_EQ(MPDelayUntil(nullptr), paramErr); }

} // namespace
