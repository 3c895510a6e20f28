#include "host/kvx/files/waveform.h"
#include "host/kvx/text/failure.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <limits>

namespace {

using kvx::Column;

/// Format a picture as text: '#' for a pixel of the waveform, '.' for any other pixel.
std::string textOf(const kvx::Picture& picture)
{
    std::string text;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::uint8_t* pixel = &picture.rgb[std::size_t(y * picture.width + x) * 3];
            text += pixel[0] < 100 ? '#' : '.';
        }
        text += '\n';
    }
    return text;
}

TEST(Waveform, DrawsOneColumnOfPixelsPerColumn)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<Column> columns = {{0, 0},        {-1, 1}, {0, 1},     {-1, 0},
                                         {-0.5f, 0.5f}, {-9, 9}, {nan, nan}, {0, infinity}};
    EXPECT_EQ(textOf(kvx::drawWaveform(columns, 5)), ".##..#..\n"
                                                     ".##.##..\n"
                                                     "########\n"
                                                     ".#.###..\n"
                                                     ".#.#.#..\n");
}

TEST(Waveform, DrawsTheMiddleLineUnderTheWave)
{
    const auto picture = kvx::drawWaveform({{0.9f, 1.0f}}, 5);
    const auto red = [&](int y) { return picture.rgb[std::size_t(y) * 3]; };
    EXPECT_LT(red(0), 100);
    EXPECT_NE(red(2), red(1)) << "the middle line";
    EXPECT_EQ(red(1), red(3)) << "the background";
}

TEST(Waveform, ReadsAFileIntoColumns)
{
    support::TemporaryFolder folder;
    support::writeSound({8000, 1, {0.25f, -0.5f, 0.75f, 0.5f, -1.0f, 1.0f, 0.125f, 0.125f}},
                        folder / "a.wav");
    const auto columns = kvx::columnsOf(folder / "a.wav", 4);
    const Column expected[] = {{-0.5f, 0.25f}, {0.5f, 0.75f}, {-1.0f, 1.0f}, {0.125f, 0.125f}};
    ASSERT_EQ(columns.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(columns[i].low, expected[i].low) << i;
        EXPECT_EQ(columns[i].high, expected[i].high) << i;
    }
}

TEST(Waveform, CombinesBothChannelsInOneColumn)
{
    support::TemporaryFolder folder;
    support::writeSound({8000, 2, {0.25f, -0.5f}}, folder / "a.wav");
    const auto columns = kvx::columnsOf(folder / "a.wav", 1);
    EXPECT_EQ(columns[0].low, -0.5f);
    EXPECT_EQ(columns[0].high, 0.25f);
}

TEST(Waveform, LeavesColumnsEmptyIfTheFileHasFewerFrames)
{
    support::TemporaryFolder folder;
    support::writeSound({8000, 1, {0.5f, -0.5f}}, folder / "a.wav");
    const auto columns = kvx::columnsOf(folder / "a.wav", 100);
    EXPECT_EQ(columns[0].high, 0.5f);
    EXPECT_EQ(columns[50].low, -0.5f);
    EXPECT_EQ(columns[99].high, 0.0f);
}

TEST(Waveform, WritesPng)
{
    support::TemporaryFolder folder;
    kvx::writePicture(kvx::drawWaveform(std::vector<Column>(7, {-0.5f, 0.5f}), 9), folder / "a.png");
    std::ifstream file(folder / "a.png", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    ASSERT_GT(bytes.size(), 24u);
    EXPECT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_EQ(bytes.substr(16, 8), std::string("\0\0\0\x07\0\0\0\x09", 8)) << "width and height";
    EXPECT_THROW(kvx::writePicture(kvx::drawWaveform({{0, 0}}, 2), folder / "no/a.png"), kvx::Failure);
}

} // namespace
