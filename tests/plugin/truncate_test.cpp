#include "plugin/truncate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(Truncation, IsTowardZeroAndGivesTheLowestNumberOutOfRange)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    const double edge = std::ldexp(1.0, 63);
    // clang-format off
    const struct { double value; std::int64_t truncated; const char* why; } facts[] = {
        {0.0,                           0,                     "zero"},
        {-0.0,                          0,                     "negative zero"},
        {0.999999,                      0,                     "down to zero"},
        {-0.999999,                     0,                     "up to zero"},
        {1.0,                           1,                     "whole"},
        {1.5,                           1,                     "toward zero"},
        {-1.5,                          -1,                    "toward zero"},
        {2.5,                           2,                     "not to even"},
        {2147483647.9,                  2147483647,            "the largest below 2^31"},
        {2147483648.5,                  2147483648,            "more than 32 bits"},
        {-4294967297.25,                -4294967297,           "more than 32 bits"},
        {9007199254740993.0,            9007199254740992,      "the nearest double"},
        {std::nextafter(edge, 0),       9223372036854774784,   "the largest that fits"},
        {edge,                          lowest,                "the first that does not fit"},
        {1e300,                         lowest,                "far too large"},
        {infinity,                      lowest,                "infinity"},
        {std::nextafter(-edge, 0),      -9223372036854774784,  "near the lowest"},
        {-edge,                         lowest,                "the lowest fits"},
        {std::nextafter(-edge, -infinity), lowest,             "the first below"},
        {-1e300,                        lowest,                "far too small"},
        {-infinity,                     lowest,                "minus infinity"},
        {std::nan(""),                  lowest,                "NaN"},
        {-std::nan(""),                 lowest,                "negative NaN"},
        {std::numeric_limits<double>::denorm_min(), 0,         "the smallest positive number"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        EXPECT_EQ(truncateTo64(fact.value), fact.truncated) << fact.value << ": " << fact.why;
        EXPECT_EQ(frameAt(fact.value), static_cast<std::uint32_t>(fact.truncated))
            << fact.value << ": " << fact.why;
    }
}

TEST(Truncation, FrameNumbersWrapAt32Bits)
{
    const struct {
        double position;
        std::uint32_t frame;
        const char* why;
    } facts[] = {
        {88200.9, 88200, "toward zero"},
        {4294967295.0, 0xFFFFFFFF, "the largest frame number"},
        {4294967296.0, 0, "the next position"},
        {-0.5, 0, "toward zero"},
        {-1.0, 0xFFFFFFFF, "one frame before the start"},
        {-44100.0, 0xFFFF53BC, "one second before the start"},
        {std::numeric_limits<double>::infinity(), 0, "the low 32 bits of INT64_MIN"},
        {std::nan(""), 0, "the low 32 bits of INT64_MIN"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(frameAt(fact.position), fact.frame) << fact.position << ": " << fact.why;
}

} // namespace
