#include "plugin/truncate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(Truncation, IsTowardZeroAndHasOneAnswerForWhatDoesNotFit)
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
        {2147483647.9,                  2147483647,            "past 32 bits, just not"},
        {2147483648.5,                  2147483648,            "past 32 bits"},
        {-4294967297.25,                -4294967297,           "past 32 bits"},
        {9007199254740993.0,            9007199254740992,      "as exact as the value is"},
        {std::nextafter(edge, 0),       9223372036854774784,   "the largest that fits"},
        {edge,                          lowest,                "the first that does not"},
        {1e300,                         lowest,                "far too large"},
        {infinity,                      lowest,                "infinity"},
        {std::nextafter(-edge, 0),      -9223372036854774784,  "near the lowest"},
        {-edge,                         lowest,                "the lowest fits"},
        {std::nextafter(-edge, -infinity), lowest,             "the first below"},
        {-1e300,                        lowest,                "far too small"},
        {-infinity,                     lowest,                "minus infinity"},
        {std::nan(""),                  lowest,                "not a number"},
        {-std::nan(""),                 lowest,                "not a number either"},
        {std::numeric_limits<double>::denorm_min(), 0,         "the smallest above zero"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        EXPECT_EQ(truncateTo64(fact.value), fact.truncated) << fact.value << ": " << fact.why;
        EXPECT_EQ(frameAt(fact.value), static_cast<std::uint32_t>(fact.truncated))
            << fact.value << ": " << fact.why;
    }
}

TEST(Truncation, FramesWrapAtThirtyTwoBits)
{
    const struct {
        double place;
        std::uint32_t frame;
        const char* why;
    } facts[] = {
        {88200.9, 88200, "toward zero"},
        {4294967295.0, 0xFFFFFFFF, "the greatest"},
        {4294967296.0, 0, "and the one behind it"},
        {-0.5, 0, "up to the first"},
        {-1.0, 0xFFFFFFFF, "one in front of it"},
        {-44100.0, 0xFFFF53BC, "a second in front of it"},
        {std::numeric_limits<double>::infinity(), 0, "the low half is zero"},
        {std::nan(""), 0, "the low half is zero"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(frameAt(fact.place), fact.frame) << fact.place << ": " << fact.why;
}

} // namespace
