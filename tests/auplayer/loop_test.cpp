// Looping in the render callback: after a slice, the loop jump determines where the next slice begins.
#include "tests/auplayer/rendered_file.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using test::Bits;
using test::excerpt;
using test::noise;
using test::RenderedFile;

constexpr double inf = INFINITY;

TEST(Loop, MovesThePositionAfterTheSlice)
{
    constexpr std::uint32_t frames = 5000;
    const struct {
        double in, out;
        std::uint32_t position, slice;
        std::uint32_t after;
        const char* why;
    } rows[] = {
        // slices near the end of the loop
        {1000, 2000, 1000, 512, 1512, "inside"},
        {1000, 2000, 1487, 512, 1999, "one frame before the loop's end"},
        {1000, 2000, 1488, 512, 1000, "to the loop's end: jumps to its start"},
        {1000, 2000, 1489, 512, 1000, "past the loop's end"},
        {1000, 2000, 1999, 1, 1000, "the loop's last frame"},
        {1000, 2000, 1998, 1, 1999, "the last frame but one"},
        {1000, 2000, 2000, 512, 1000, "from the loop's end: jumps to its start"},
        {1000, 2000, 4999, 512, 1000, "from the end of the file"},
        {1000, 2000, 5000, 512, 1000, "past the end of the file"},
        {1000, 2000, 0xFFFFFFFF, 512, 1000, "far past the end of the file"},
        {1000, 2000, 1500, 0, 1500, "no frames, inside the loop"},
        {1000, 2000, 2000, 0, 1000, "no frames, at the loop's end"},
        // slices near the start of the loop
        {1000, 2000, 0, 512, 1000, "before the loop: jumps to its start"},
        {1000, 2000, 487, 512, 1000, "one frame before the start"},
        {1000, 2000, 488, 512, 1000, "to the start"},
        {1000, 2000, 489, 512, 1001, "past the start"},
        {1000, 2000, 0, 0, 1000, "no frames, before the loop"},
        {1000, 2000, 0, 2048, 1000, "one slice from before the loop to after it"},
        {1000, 2000, 0, 8192, 1000, "one slice over the whole file"},
        // loops at the start or the end of the file
        {0, 5000, 4488, 512, 0, "the whole file, to its end"},
        {0, 5000, 4487, 512, 4999, "the whole file, one frame before its end"},
        {0, 5000, 4600, 512, 0, "the whole file, past its end"},
        {4000, 5000, 4488, 512, 4000, "the end of the file is the loop's end"},
        {4000, 5000, 4900, 512, 4000, "past the end of the file"},
        {4000, 5001, 4900, 512, 5000, "an end past the file is never reached"},
        {4000, 5001, 5000, 512, 5000, "also from the end of the file"},
        {4000, inf, 5000, 512, 5000, "an infinite end is never reached"},
        {0, 0, 0, 512, 0, "an empty loop at the start"},
        // loops without frames
        {2000, 2000, 0, 512, 2000, "a loop of no frames, from before it"},
        {2000, 2000, 1488, 512, 2000, "a loop of no frames, to it"},
        {2000, 2000, 2000, 512, 2000, "every slice begins at the loop"},
        {5000, 5000, 4488, 512, 5000, "a loop of no frames at the end of the file"},
        // loops that end before they start, which the properties do not allow
        {2000, 1000, 0, 512, 2000, "from before both"},
        {2000, 1000, 1999, 512, 2000, "from between"},
        {2000, 1000, 4000, 512, 2000, "from after both"},
        // loop points with fractions and extreme values
        {1000.75, 2000.5, 0, 512, 1000, "the jump drops the fraction"},
        {1000.75, 2000.5, 488, 512, 1000, "1000 is before 1000.75"},
        {1000.75, 2000.5, 1488, 512, 2000, "2000 is before 2000.5"},
        {1000.75, 2000.5, 1489, 512, 1000, "2001 is after 2000.5"},
        {0.5, 2000, 0, 0, 0, "less than a frame"},
        {6000, 7000, 0, 512, 6000, "a start past the file: silence"},
        {6000, 7000, 6000, 512, 6000, "the end of the file is before the start"},
        {4294967295.0, 4294967295.0, 0, 512, 0xFFFFFFFF, "the highest frame number"},
        {4294967296.0, 5e9, 0, 512, 0, "2^32 wraps"},
        {4294967297.0, 5e9, 0, 512, 1, "2^32 + 1 wraps"},
        {1e18, 1e19, 0, 512, 0xA7640000, "the low 32 bits of a 64-bit number"},
        {9223372036854774784.0, inf, 0, 512, 0xFFFFFC00, "the largest 64-bit number"},
        {9223372036854775808.0, inf, 0, 512, 0, "one above 64 bits"},
        {1e300, inf, 0, 512, 0, "a very large number"},
        {inf, inf, 0, 512, 0, "infinity"},
        {-1, 2000, 1488, 512, 0xFFFFFFFF, "a start before the file wraps"},
        {-1, 2000, 0, 512, 512, "a negative start is never ahead"},
        {-1, -1, 0, 512, 0xFFFFFFFF, "neither point is set, which the properties do not allow"},
        {-0.5, 2000, 1488, 512, 0, "the start is truncated toward zero"},
        {-inf, 2000, 1488, 512, 0, "minus infinity"},
        {NAN, 2000, 0, 512, 512, "a start of not-a-number is never ahead"},
        {NAN, 2000, 1488, 512, 0, "a start of not-a-number is frame 0"},
        {1000, NAN, 4000, 512, 4512, "an end of not-a-number is never reached"},
        {1000, NAN, 5000, 512, 5000, "also at the end of the file"},
        {1000, NAN, 0, 512, 1000, "the start still applies"},
        {1000, -1, 0, 512, 1000, "an unset end is always reached"},
        {1000, -1, 3000, 512, 1000, "every slice jumps to the start"},
        {1000, -inf, 3000, 512, 1000, "an end of minus infinity is always reached"},
    };
    const Bits samples = noise(frames, 2);
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.in << " to " << row.out << ", " << row.slice << " frames from "
                                        << row.position << ": " << row.why);
        RenderedFile file(samples, 2);
        file->position = row.position;
        file.loop(row.in, row.out);
        EXPECT_EQ(file.render(row.slice), excerpt(samples, 2, row.position, row.slice))
            << "the slice itself is unchanged";
        EXPECT_EQ(file->position, row.after);
        EXPECT_EQ(file->lastRenderOffset, 2 * row.position);

        RenderedFile off(samples, 2);
        off->position = row.position;
        off.loop(row.in, row.out);
        off->isLooping = false;
        off.render(row.slice);
        EXPECT_EQ(off->position, std::min<std::uint64_t>(std::uint64_t{row.position} + row.slice, frames))
            << "without looping the points have no effect";
    }
}

TEST(Loop, RendersTheSliceThatPassesTheEndWhole)
{
    const Bits samples = noise(5000, 2);
    RenderedFile file(samples, 2);
    file.loop(1000, 2000);
    // First frames of consecutive slices of 512 frames.
    const std::uint32_t begins[] = {0, 1000, 1512, 1000, 1512, 1000};
    for (const std::uint32_t begin : begins) {
        ASSERT_EQ(file->position, begin);
        ASSERT_EQ(file.render(512), excerpt(samples, 2, begin, 512));
    }
}

TEST(Loop, RepeatsTheSameFramesAtEverySliceSize)
{
    const Bits samples = noise(10000, 2);
    for (const std::uint32_t slice : {1u, 512u, 1156u, 2048u, 8192u}) {
        SCOPED_TRACE(slice);
        RenderedFile file(samples, 2);
        file->position = 3000;
        file.loop(3000, 4000);
        const std::uint32_t slices = (1000 + slice - 1) / slice; // number of slices in one pass of the loop
        for (int pass = 0; pass < 3; ++pass)
            for (std::uint32_t i = 0; i < slices; ++i)
                ASSERT_EQ(file.render(slice), excerpt(samples, 2, 3000 + i * slice, slice));
        EXPECT_EQ(file->position, 3000u);
    }
}

TEST(Loop, LosesNoFrameAtTheEndOfTheFile)
{
    const Bits samples = noise(1000, 2);
    RenderedFile file(samples, 2);
    file.loop(0, 1000);
    for (int pass = 0; pass < 3; ++pass) {
        EXPECT_EQ(file.render(600), excerpt(samples, 2, 0, 600));
        EXPECT_EQ(file.render(600), excerpt(samples, 2, 600, 600)) << "400 frames, then silence";
        EXPECT_EQ(file->position, 0u);
    }
    file->position = 400;
    EXPECT_EQ(file.render(600), excerpt(samples, 2, 400, 600)) << "exactly to the end";
    EXPECT_EQ(file->position, 0u);
}

TEST(Loop, PlaysToTheEndAfterItIsSwitchedOff)
{
    const Bits samples = noise(5000, 2);
    RenderedFile file(samples, 2);
    file.loop(1000, 2000);
    file->position = 1600;
    file.render(512);
    EXPECT_EQ(file->position, 1000u);
    file->isLooping = false;
    for (std::uint32_t begin = 1000; begin < 6000; begin += 500)
        EXPECT_EQ(file.render(500), excerpt(samples, 2, begin, 500));
    EXPECT_EQ(file->position, 5000u);
}

} // namespace
