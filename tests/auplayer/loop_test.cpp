// Loops, as slices see them: looked at behind each slice, and true of the next.
#include "tests/auplayer/rendered_file.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using test::Bits;
using test::excerpt;
using test::noise;
using test::RenderedFile;

constexpr double inf = INFINITY;

TEST(Loop, MovesThePositionBehindTheSlice)
{
    constexpr std::uint32_t frames = 5000;
    const struct {
        double in, out;
        std::uint32_t position, slice;
        std::uint32_t after;
        const char* why;
    } rows[] = {
        // out of it
        {1000, 2000, 1000, 512, 1512, "inside"},
        {1000, 2000, 1487, 512, 1999, "one frame short of the loop's end"},
        {1000, 2000, 1488, 512, 1000, "to the loop's end: back to its start"},
        {1000, 2000, 1489, 512, 1000, "past it"},
        {1000, 2000, 1999, 1, 1000, "its last frame"},
        {1000, 2000, 1998, 1, 1999, "the last but one"},
        {1000, 2000, 2000, 512, 1000, "played from behind it: back at once"},
        {1000, 2000, 4999, 512, 1000, "from the end of the file"},
        {1000, 2000, 5000, 512, 1000, "behind the end of the file"},
        {1000, 2000, 0xFFFFFFFF, 512, 1000, "far behind it"},
        {1000, 2000, 1500, 0, 1500, "no frames, inside"},
        {1000, 2000, 2000, 0, 1000, "no frames, at its end"},
        // into it
        {1000, 2000, 0, 512, 1000, "in front of the loop: on to its start"},
        {1000, 2000, 487, 512, 1000, "one short of it"},
        {1000, 2000, 488, 512, 1000, "to it"},
        {1000, 2000, 489, 512, 1001, "and past it"},
        {1000, 2000, 0, 0, 1000, "no frames, in front of it"},
        {1000, 2000, 0, 2048, 1000, "one slice in front of the loop and behind it"},
        {1000, 2000, 0, 8192, 1000, "one slice over the whole file"},
        // at the file's ends
        {0, 5000, 4488, 512, 0, "the whole file, to its end"},
        {0, 5000, 4487, 512, 4999, "and one short of it"},
        {0, 5000, 4600, 512, 0, "past it"},
        {4000, 5000, 4488, 512, 4000, "the end of the file"},
        {4000, 5000, 4900, 512, 4000, "and past it"},
        {4000, 5001, 4900, 512, 5000, "an end behind the file is never come to"},
        {4000, 5001, 5000, 512, 5000, "nor later"},
        {4000, inf, 5000, 512, 5000, "however far it is"},
        {0, 0, 0, 512, 0, "all of nothing, at the start"},
        // no frame long
        {2000, 2000, 0, 512, 2000, "a loop of no frames, from in front of it"},
        {2000, 2000, 1488, 512, 2000, "to it"},
        {2000, 2000, 2000, 512, 2000, "from it on, each slice is the same"},
        {5000, 5000, 4488, 512, 5000, "at the end of the file"},
        // turned around, as a host program cannot make it by the properties
        {2000, 1000, 0, 512, 2000, "the end in front of the start"},
        {2000, 1000, 1999, 512, 2000, "it leads to the start from everywhere"},
        {2000, 1000, 4000, 512, 2000, "from behind, too"},
        // fractions, and numbers that no frame has
        {1000.75, 2000.5, 0, 512, 1000, "a fraction is dropped on the way to the start"},
        {1000.75, 2000.5, 488, 512, 1000, "1000 lies in front of 1000.75"},
        {1000.75, 2000.5, 1488, 512, 2000, "2000 does in front of 2000.5"},
        {1000.75, 2000.5, 1489, 512, 1000, "2001 does not"},
        {0.5, 2000, 0, 0, 0, "less than a frame"},
        {6000, 7000, 0, 512, 6000, "a start behind the file: silence"},
        {6000, 7000, 6000, 512, 6000, "the end of the file lies in front of it"},
        {4294967295.0, 4294967295.0, 0, 512, 0xFFFFFFFF, "the last frame there can be"},
        {4294967296.0, 5e9, 0, 512, 0, "the one behind it wraps"},
        {4294967297.0, 5e9, 0, 512, 1, "and so on"},
        {1e18, 1e19, 0, 512, 0xA7640000, "low 32 bits of a number that 64 bits hold"},
        {9223372036854774784.0, inf, 0, 512, 0xFFFFFC00, "the greatest that they hold"},
        {9223372036854775808.0, inf, 0, 512, 0, "the least that they do not"},
        {1e300, inf, 0, 512, 0, "and a huge one"},
        {inf, inf, 0, 512, 0, "infinity"},
        {-1, 2000, 1488, 512, 0xFFFFFFFF, "a start before the file wraps"},
        {-1, 2000, 0, 512, 512, "but nothing is moved on to it"},
        {-1, -1, 0, 512, 0xFFFFFFFF, "neither was set: the host's own doing, since looping wants both"},
        {-0.5, 2000, 1488, 512, 0, "toward zero"},
        {-inf, 2000, 1488, 512, 0, "minus infinity"},
        {NAN, 2000, 0, 512, 512, "no number lies in front of nothing"},
        {NAN, 2000, 1488, 512, 0, "and is no frame but the first"},
        {1000, NAN, 4000, 512, 4512, "none ends a loop"},
        {1000, NAN, 5000, 512, 5000, "the end of the file does not, either"},
        {1000, NAN, 0, 512, 1000, "but it begins as it says"},
        {1000, -1, 0, 512, 1000, "an end that is not set is in front of everything"},
        {1000, -1, 3000, 512, 1000, "so that each slice goes back"},
        {1000, -inf, 3000, 512, 1000, "and so is minus infinity"},
    };
    const Bits samples = noise(frames, 2);
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.in << " to " << row.out << ", " << row.slice << " frames from "
                                        << row.position << ": " << row.why);
        RenderedFile file(samples, 2);
        file->position = row.position;
        file.loop(row.in, row.out);
        EXPECT_EQ(file.render(row.slice), excerpt(samples, 2, row.position, row.slice))
            << "the slice itself is not minded";
        EXPECT_EQ(file->position, row.after);
        EXPECT_EQ(file->lastRenderOffset, 2 * row.position);

        RenderedFile off(samples, 2);
        off->position = row.position;
        off.loop(row.in, row.out);
        off->isLooping = false;
        off.render(row.slice);
        EXPECT_EQ(off->position, std::min<std::uint64_t>(std::uint64_t{row.position} + row.slice, frames))
            << "without looping the points mean nothing";
    }
}

TEST(Loop, PlaysTheSliceThatPassesTheEndAndThenFromTheStart)
{
    const Bits samples = noise(5000, 2);
    RenderedFile file(samples, 2);
    file.loop(1000, 2000);
    const std::uint32_t begins[] = {0, 1000, 1512, 1000, 1512, 1000}; // slices of 512 frames
    for (const std::uint32_t begin : begins) {
        ASSERT_EQ(file->position, begin);
        ASSERT_EQ(file.render(512), excerpt(samples, 2, begin, 512));
    }
}

TEST(Loop, OfEverySliceSizeRepeatsTheSameMusic)
{
    const Bits samples = noise(10000, 2);
    for (const std::uint32_t slice : {1u, 512u, 1156u, 2048u, 8192u}) {
        SCOPED_TRACE(slice);
        RenderedFile file(samples, 2);
        file->position = 3000;
        file.loop(3000, 4000);
        const std::uint32_t slices = (1000 + slice - 1) / slice; // of one turn
        for (int turn = 0; turn < 3; ++turn)
            for (std::uint32_t i = 0; i < slices; ++i)
                ASSERT_EQ(file.render(slice), excerpt(samples, 2, 3000 + i * slice, slice));
        EXPECT_EQ(file->position, 3000u);
    }
}

TEST(Loop, WhoseEndIsTheFilesLosesNoFrameOfIt)
{
    const Bits samples = noise(1000, 2);
    RenderedFile file(samples, 2);
    file.loop(0, 1000);
    for (int turn = 0; turn < 3; ++turn) {
        EXPECT_EQ(file.render(600), excerpt(samples, 2, 0, 600));
        EXPECT_EQ(file.render(600), excerpt(samples, 2, 600, 600)) << "400 frames, then silence";
        EXPECT_EQ(file->position, 0u);
    }
    file->position = 400;
    EXPECT_EQ(file.render(600), excerpt(samples, 2, 400, 600)) << "just to the end";
    EXPECT_EQ(file->position, 0u);
}

TEST(Loop, SwitchedOffLetsTheFileEnd)
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
