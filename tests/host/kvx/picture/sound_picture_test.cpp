#include "host/kvx/picture/sound_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace {

using kvx::Area;
using kvx::Picture;
using kvx::PictureSize;
using kvx::SoundAnalysis;
using kvx::Ticks;
using kvx::WaveColumn;

constexpr PictureSize size = {400, 500};

/// An analysis in which every column of a channel is the same.
SoundAnalysis makeAnalysis(const std::vector<WaveColumn>& channels, float db)
{
    const auto layout = kvx::layOutPicture(size, int(channels.size()));
    SoundAnalysis analysis;
    analysis.format.sampleRate = 44100;
    analysis.format.fileChannels = analysis.format.channels = int(channels.size());
    analysis.format.frames = 441000;
    const auto columns = std::size_t(layout.spectrogram.width);
    for (const WaveColumn& each : channels) analysis.waves.emplace_back(columns, each);
    analysis.spectra.assign(columns, std::vector<float>(std::size_t(layout.spectrogram.height), db));
    return analysis;
}

/// Whether the pixel is a part of the wave, whose colours contain less red than all others.
bool isWave(const Picture& picture, int x, int y)
{
    return picture.rgb[std::size_t(y * picture.width + x) * 3] < 150;
}

/// The rows from the top of `lane` of the first and after the last pixel of the wave in a column.
std::pair<int, int> waveRows(const Picture& picture, const Area& lane, int x)
{
    std::pair<int, int> rows = {lane.height, 0};
    for (int y = 0; y < lane.height; ++y)
        if (isWave(picture, x, lane.y + y)) rows = {std::min(rows.first, y), y + 1};
    return rows;
}

TEST(PictureLayout, HasALaneForEachChannelAndTheSpectrogram)
{
    const auto layout = kvx::layOutPicture({1200, 800}, 2);
    ASSERT_EQ(layout.lanes.size(), 2u);
    const Area expected[] = {{54, 66, 1080, 131}, {54, 203, 1080, 131}, {54, 360, 1080, 406}};
    const Area found[] = {layout.lanes[0], layout.lanes[1], layout.spectrogram};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(found[i].x, expected[i].x) << i;
        EXPECT_EQ(found[i].y, expected[i].y) << i;
        EXPECT_EQ(found[i].width, expected[i].width) << i;
        EXPECT_EQ(found[i].height, expected[i].height) << i;
    }
}

TEST(PictureLayout, LeavesOutChannelsWithoutSpace)
{
    const struct {
        PictureSize size;
        int channels;
        std::size_t lanes;
    } facts[] = {{{320, 240}, 1, 1},  {{320, 240}, 2, 2},      {{320, 240}, 6, 2},
                 {{1200, 800}, 6, 6}, {{1200, 800}, 1024, 12}, {{1200, 4096}, 1024, 72}};
    for (const auto& fact : facts) {
        const auto layout = kvx::layOutPicture(fact.size, fact.channels);
        EXPECT_EQ(layout.lanes.size(), fact.lanes) << fact.size.height;
        EXPECT_GE(layout.lanes.back().height, 16);
        EXPECT_GT(layout.spectrogram.height, layout.lanes.back().bottom() - layout.lanes.front().y)
            << "the spectrogram is the largest plot";
        EXPECT_LT(layout.spectrogram.bottom(), fact.size.height);
    }
}

TEST(SoundPicture, FillsALaneWithASquareOfFullScale)
{
    const Picture picture = kvx::drawSound(makeAnalysis({{-1, 1, 1}}, 0), "a.wav", size);
    const Area lane = kvx::layOutPicture(size, 1).lanes[0];
    for (int y = lane.y; y < lane.bottom(); ++y)
        for (int x = lane.x; x < lane.right(); ++x) ASSERT_TRUE(isWave(picture, x, y)) << x << " " << y;
}

TEST(SoundPicture, DrawsSilenceAsALineAndTheLowestColour)
{
    const Picture picture = kvx::drawSound(makeAnalysis({{0, 0, 0}}, float(kvx::silentDb)), "a.wav", size);
    const auto layout = kvx::layOutPicture(size, 1);
    const int middle = int(std::lround((layout.lanes[0].height - 1) / 2.0));
    for (int x = layout.lanes[0].x; x < layout.lanes[0].right(); ++x)
        ASSERT_EQ(waveRows(picture, layout.lanes[0], x), std::make_pair(middle, middle + 1)) << x;
    const Area& plot = layout.spectrogram;
    const kvx::Colour lowest = kvx::colourOfLevel(kvx::silentDb);
    for (int y = plot.y; y < plot.bottom(); ++y)
        for (int x = plot.x; x < plot.right(); ++x)
            ASSERT_EQ(picture.rgb[std::size_t(y * picture.width + x) * 3 + 2], lowest.blue) << x << " " << y;
}

TEST(SoundPicture, DrawsEachChannelInItsLane)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<WaveColumn> channels = {
        {-0.5f, 0.5f, 0.25f}, {0, 1, 0.5f}, {-9, 9, 9}, {nan, nan, nan}};
    const Picture picture = kvx::drawSound(makeAnalysis(channels, -60), "a.wav", size);
    const auto layout = kvx::layOutPicture(size, 4);
    const int last = layout.lanes[0].height - 1;
    const auto row = [&](double sample) { return int(std::lround((1 - sample) / 2 * last)); };
    const std::pair<int, int> expected[] = {
        {row(0.5), row(-0.5) + 1}, {0, row(0) + 1}, {0, last + 1}, {row(0), row(0) + 1}};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(waveRows(picture, layout.lanes[i], layout.lanes[i].x + 100), expected[i]) << i;
}

TEST(SoundPicture, CountsChannelsFromZero)
{
    constexpr kvx::Colour white = {255, 255, 255}, labelColour = {84, 92, 104};
    const std::vector<WaveColumn> channels(3);
    const Picture picture = kvx::drawSound(makeAnalysis(channels, -60), "a.wav", size);
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        const Area lane = kvx::layOutPicture(size, 3).lanes[channel];
        Picture expected(size.width, size.height, white);
        kvx::drawText(expected, lane.right() + 8, lane.y + lane.height / 2, std::to_string(channel), 14,
                      labelColour);
        for (int y = lane.y; y < lane.bottom(); ++y) {
            const auto from = (y * size.width + lane.right()) * 3, to = (y + 1) * size.width * 3;
            ASSERT_TRUE(
                std::equal(picture.rgb.begin() + from, picture.rgb.begin() + to, expected.rgb.begin() + from))
                << channel << " " << y;
        }
    }
}

TEST(SoundPicture, ConnectsEachColumnOfTheWaveWithTheColumnBefore)
{
    SoundAnalysis analysis = makeAnalysis({{0.5f, 0.5f, 0.5f}}, -60);
    analysis.waves[0][10] = {-0.5f, -0.5f, 0.5f};
    const Picture picture = kvx::drawSound(analysis, "a.wav", size);
    const Area lane = kvx::layOutPicture(size, 1).lanes[0];
    const int high = int(std::lround(0.25 * (lane.height - 1))),
              low = int(std::lround(0.75 * (lane.height - 1)));
    EXPECT_EQ(waveRows(picture, lane, lane.x + 9), std::make_pair(high, high + 1));
    EXPECT_EQ(waveRows(picture, lane, lane.x + 10), std::make_pair(high, low + 1));
    EXPECT_EQ(waveRows(picture, lane, lane.x + 11), std::make_pair(high, low + 1));
    EXPECT_EQ(waveRows(picture, lane, lane.x + 12), std::make_pair(high, high + 1));
}

TEST(SoundPicture, HasLighterColoursForHigherLevels)
{
    const auto lightness = [](double db) {
        const kvx::Colour colour = kvx::colourOfLevel(db);
        return 0.2126 * colour.red + 0.7152 * colour.green + 0.0722 * colour.blue;
    };
    for (double db = kvx::silentDb; db < 0; db += 2) EXPECT_LT(lightness(db), lightness(db + 2)) << db;
    EXPECT_EQ(lightness(-500), lightness(kvx::silentDb));
    EXPECT_EQ(lightness(6), lightness(0));
}

TEST(PictureTicks, AreAtRoundTimesAndFrequencies)
{
    const struct {
        Ticks ticks;
        double step;
    } facts[] = {
        {kvx::timeTicks(0.00375, 1080, 76), 0.0005}, {kvx::timeTicks(6.5, 1080, 60), 0.5},
        {kvx::timeTicks(6.5, 200, 60), 2},           {kvx::timeTicks(59, 1080, 60), 5},
        {kvx::timeTicks(80, 1080, 60), 5},           {kvx::timeTicks(100, 1080, 60), 10},
        {kvx::timeTicks(600, 1080, 60), 60},         {kvx::timeTicks(3600, 1080, 60), 300},
        {kvx::timeTicks(3600, 200, 60), 1800},       {kvx::timeTicks(86400, 1080, 60), 7200},
        {kvx::timeTicks(1e6, 1080, 60), 72000},      {kvx::frequencyTicks(22050, 405, 28), 2000},
        {kvx::frequencyTicks(22050, 70, 28), 10000}, {kvx::frequencyTicks(500, 405, 28), 50},
    };
    for (const auto& fact : facts) EXPECT_DOUBLE_EQ(fact.ticks.step, fact.step) << fact.ticks.end;
}

TEST(PictureTicks, HaveTimesInSecondsOrMinutes)
{
    const struct {
        double seconds;
        Ticks ticks;
        const char* text;
    } facts[] = {{0, {0.5, 6.5}, "0.0 s"},
                 {2.5, {0.5, 6.5}, "2.5 s"},
                 {4, {2, 6.5}, "4 s"},
                 {0.002, {0.0005, 0.00375}, "0.0020 s"},
                 {0, {5, 60}, "0:00"},
                 {75, {15, 100}, "1:15"},
                 {3600, {1800, 4000}, "1:00:00"},
                 {36065, {5, 40000}, "10:01:05"}};
    for (const auto& fact : facts) EXPECT_EQ(kvx::formatTickTime(fact.seconds, fact.ticks), fact.text);
}

} // namespace
