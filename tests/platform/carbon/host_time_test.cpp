// Tests of the functions that read the host clock.
#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

#include <gtest/gtest.h>

#include <cstdint>

namespace {

std::uint64_t numberOf(UnsignedWide wide) { return std::uint64_t{wide.hi} << 32 | wide.lo; }

TEST(HostTime, CountsNanoseconds)
{
    EXPECT_EQ(AudioGetHostClockFrequency(), 1e9);
    EXPECT_EQ(AudioGetHostClockMinimumTimeDelta(), 1u);
}

TEST(HostTime, ConvertsExactlyOverAll64Bits)
{
    for (const UInt64 time : {0ull, 1ull, 0xFFFFFFFFull, 0x100000000ull, (1ull << 53) + 1,
                              0x7FFFFFFFFFFFFFFFull, 0x8000000000000000ull, 0xFFFFFFFFFFFFFFFFull}) {
        EXPECT_EQ(AudioConvertHostTimeToNanos(time), time);
        EXPECT_EQ(AudioConvertNanosToHostTime(time), time);
    }
}

TEST(HostTime, NeverGoesBackBetweenItsFunctions)
{
    std::uint64_t last = 0;
    for (int i = 0; i < 10000; ++i) {
        const std::uint64_t now = i % 2 ? AudioGetCurrentHostTime() : numberOf(UpTime());
        ASSERT_GE(now, last);
        last = now;
    }
    EXPECT_GT(last, 0u);
}

TEST(HostTime, IsTheTimeThatTicksCount)
{
    const UInt64 before = AudioGetCurrentHostTime();
    const UInt32 ticks = TickCount();
    const UInt64 after = AudioGetCurrentHostTime();
    EXPECT_GE(ticks, static_cast<UInt32>(before / 1000000000 * 60 + before % 1000000000 * 60 / 1000000000));
    EXPECT_LE(ticks, static_cast<UInt32>(after / 1000000000 * 60 + after % 1000000000 * 60 / 1000000000));
}

} // namespace
