#include "host/kvx/text/time_text.h"

#include <gtest/gtest.h>

namespace {

TEST(FormatTime, CutsOffTenths)
{
    const struct {
        double seconds;
        const char* text;
        const char* why;
    } facts[] = {
        {0, "0:00.0", "the start"},
        {0.05, "0:00.0", "cut off, not rounded"},
        {7.39, "0:07.3", "seconds have two digits"},
        {59.99, "0:59.9", "just below a minute"},
        {60, "1:00.0", "one minute"},
        {3599.9, "59:59.9", "just below an hour"},
        {3600, "1:00:00.0", "one hour"},
        {36061.5, "10:01:01.5", "after an hour, minutes have two digits"},
        {-1, "0:00.0", "negative times print as the start"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::formatTime(fact.seconds), fact.text) << fact.why;
}

TEST(FormatTimeOption, RoundsToMillisecondsWithoutTrailingZeros)
{
    const struct {
        double seconds;
        const char* text;
    } facts[] = {
        {0, "0:00"},       {6.5, "0:06.5"},       {10, "0:10"},      {1.001, "0:01.001"},     {90, "1:30"},
        {59.9996, "1:00"}, {3599.25, "59:59.25"}, {3600, "1:00:00"}, {36061.5, "10:01:01.5"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::formatTimeOption(fact.seconds), fact.text);
}

TEST(ReadTime, AcceptsSecondsMinutesAndHours)
{
    const struct {
        const char* text;
        double seconds;
    } facts[] = {
        {"0", 0},
        {"90", 90},
        {"1.5", 1.5},
        {"+3", 3},
        {"1e3", 1000},
        {"0:00", 0},
        {"1:30", 90},
        {"01:30", 90},
        {"1:30.25", 90.25},
        {"90:00", 5400},
        {"0:01:30", 90},
        {"1:02:03", 3723},
        {"1:02:03.5", 3723.5},
        {"0:59.999", 59.999},
        {"-1", -1},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::readTime(fact.text), fact.seconds) << fact.text;
}

TEST(ReadTime, RefusesOtherTexts)
{
    for (const char* text :
         {"",           ":",      "1:",     ":30",   "1:5",   "1:60",    "1:005",  "1:3a",
          "1:30.",      "1:30.x", "1.5:30", "-1:30", "+1:30", "1:60:00", "1:5:00", "1:30.5:00",
          "1:00:00:00", "1::00",  "1 :30",  "1:1e1", "1:+3",  "nan",     "inf",    "x"})
        EXPECT_FALSE(kvx::readTime(text)) << text;
}

TEST(ReadTime, ReadsWhatFormatTimePrints)
{
    for (const double seconds : {0.0, 7.5, 59.5, 60.0, 3599.5, 3600.0, 36061.5})
        EXPECT_EQ(kvx::readTime(kvx::formatTime(seconds)), seconds);
}

} // namespace
