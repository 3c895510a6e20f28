// When a file has ended, and how long what came of it is.
#include "host/kvx/play/end_rule.h"

#include <gtest/gtest.h>

namespace {

TEST(EndRule, CountsWhatComesOfAFile)
{
    const struct {
        std::uint64_t frames;
        double fileRate, rate, deviceRate;
        std::uint64_t rendered;
        const char* why;
    } facts[] = {
        {0, 44100, 1, 44100, 0, "nothing"},
        {1, 44100, 1, 44100, 1, "one frame"},
        {44101, 44100, 1, 44100, 44101, "unity keeps every frame"},
        {100, 44100, 2, 44100, 50, "twice as fast"},
        {101, 44100, 2, 44100, 51, "half a frame is rounded up"},
        {100, 44100, 3, 44100, 33, "a third is rounded down"},
        {100, 44100, 0.5, 44100, 200, "half as fast"},
        {44100, 44100, 1, 48000, 48000, "another rate of the device"},
        {44100, 44100, 2, 48000, 24000, "both"},
        {4294967295u, 192000, 0.04, 192000, 107374182375u, "the longest file, as slow as it goes"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::framesRendered(fact.frames, fact.fileRate, fact.rate, fact.deviceRate), fact.rendered)
            << fact.why;
}

TEST(EndRule, CountsFramesThatAreBegun)
{
    const struct {
        double seconds, rate;
        std::uint64_t frames;
        const char* why;
    } facts[] = {
        {0, 44100, 0, "none"},
        {-1, 44100, 0, "nor before the start"},
        {1, 44100, 44100, "whole"},
        {1.0 / 44100, 44100, 1, "one"},
        {512.0 / 48000, 48000, 512, "frames that were made seconds are the same frames again"},
        {1234567.0 / 44100, 44100, 1234567, "likewise"},
        {1.5 / 44100, 44100, 2, "one is begun"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::framesOf(fact.seconds, fact.rate), fact.frames) << fact.why;
}

TEST(EndRule, KnowsHundredthsInSinglePrecision)
{
    for (int hundredths = 4; hundredths <= 3200; ++hundredths)
        EXPECT_EQ(kvx::asGiven(float(hundredths / 100.0)), hundredths / 100.0);
    const double semitone = 1.0594630943592953;
    EXPECT_EQ(kvx::asGiven(semitone), semitone) << "no hundredth";
}

TEST(EndRule, WaitsForWhatIsHeldBack)
{
    kvx::EndRule rule;
    EXPECT_FALSE(rule.hasEnded(1000, 512)) << "seen first here";
    EXPECT_FALSE(rule.hasEnded(1511, 512)) << "a frame is missing";
    EXPECT_TRUE(rule.hasEnded(1512, 512));
}

TEST(EndRule, StartsAnewWhenThePlayerIsMovedBack)
{
    kvx::EndRule rule;
    EXPECT_FALSE(rule.hasEnded(1000, 512));
    rule.notAtEnd();
    EXPECT_FALSE(rule.hasEnded(5000, 512));
    EXPECT_TRUE(rule.hasEnded(5512, 512));
}

TEST(EndRule, EndsAtOnceWhereNothingIsHeldBack)
{
    kvx::EndRule rule;
    EXPECT_TRUE(rule.hasEnded(1000, 0));
}

} // namespace
