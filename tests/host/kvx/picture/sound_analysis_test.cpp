#include "host/kvx/picture/sound_analysis.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using kvx::AnalysisSize;
using kvx::SoundAnalysis;
using support::Sound;

struct SoundAnalysisTest : testing::Test {
    support::TemporaryFolder folder;

    SoundAnalysis analyse(const Sound& sound, const AnalysisSize& size)
    {
        support::writeSound(sound, folder / "a.wav");
        return kvx::analyseSound(folder / "a.wav", size,
                                 [](const kvx::SoundFormat&, std::int64_t) { return true; })
            .value();
    }
};

/// A sine of full scale in the last channel; the other channels are silent.
Sound makeSine(double frequency, int channels, int sampleRate = 44100, std::size_t frames = 88200)
{
    Sound sound{sampleRate, channels, std::vector<float>(frames * std::size_t(channels))};
    for (std::size_t i = 0; i < frames; ++i)
        sound.samples[(i + 1) * std::size_t(channels) - 1] =
            float(std::sin(2 * 3.14159265358979323846 * frequency * double(i) / sampleRate));
    return sound;
}

std::size_t brightestRow(const std::vector<float>& levels)
{
    return std::size_t(std::max_element(levels.begin(), levels.end()) - levels.begin());
}

TEST_F(SoundAnalysisTest, FindsPeaksAndRmsOfEachColumn)
{
    const auto waves =
        analyse({8000, 1, {0.25f, -0.5f, 0.75f, 0.5f, -1.0f, 1.0f, 0.125f, 0.125f}}, {4, 1, 1}).waves;
    const struct {
        float low, high;
        double squares;
    } expected[] = {
        {-0.5f, 0.25f, 0.3125}, {0.5f, 0.75f, 0.8125}, {-1.0f, 1.0f, 2}, {0.125f, 0.125f, 0.03125}};
    ASSERT_EQ(waves.size(), 1u);
    ASSERT_EQ(waves[0].size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(waves[0][i].low, expected[i].low) << i;
        EXPECT_EQ(waves[0][i].high, expected[i].high) << i;
        EXPECT_EQ(waves[0][i].rms, float(std::sqrt(expected[i].squares / 2))) << i;
    }
}

TEST_F(SoundAnalysisTest, MeasuresEachChannelSeparately)
{
    const auto waves = analyse({8000, 3, {0.25f, -0.5f, 1.0f}}, {1, 1, 2}).waves;
    ASSERT_EQ(waves.size(), 2u) << "the first channels, as requested";
    EXPECT_EQ(waves[0][0].high, 0.25f);
    EXPECT_EQ(waves[1][0].low, -0.5f);
}

TEST_F(SoundAnalysisTest, RepeatsAFrameIfThereAreMoreColumnsThanFrames)
{
    const auto wave = analyse({8000, 1, {0.5f, -0.5f, 0.25f}}, {10, 1, 1}).waves[0];
    const float expected[] = {0.5f, 0.5f, 0.5f, 0.5f, -0.5f, -0.5f, -0.5f, 0.25f, 0.25f, 0.25f};
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(wave[i].low, expected[i]) << i;
        EXPECT_EQ(wave[i].high, expected[i]) << i;
        EXPECT_EQ(wave[i].rms, std::abs(expected[i])) << i;
    }
}

// The columns end at other frames than the blocks in which the file is read.
TEST_F(SoundAnalysisTest, MeasuresColumnsAcrossBlocks)
{
    const Sound sound = support::makeNoise(44100, 2, 16384 * 3 + 17);
    const std::size_t count = 7;
    const auto waves = analyse(sound, {count, 1, 2}).waves;
    for (std::size_t channel = 0; channel < 2; ++channel)
        for (std::size_t column = 0; column < count; ++column) {
            float low = 1, high = -1;
            double squares = 0;
            const std::size_t from = column * sound.frames() / count,
                              to = (column + 1) * sound.frames() / count;
            for (std::size_t i = from; i < to; ++i) {
                const float sample = sound.samples[i * 2 + channel];
                low = std::min(low, sample);
                high = std::max(high, sample);
                squares += double{sample} * sample;
            }
            EXPECT_EQ(waves[channel][column].low, low) << column;
            EXPECT_EQ(waves[channel][column].high, high) << column;
            EXPECT_EQ(waves[channel][column].rms, float(std::sqrt(squares / double(to - from)))) << column;
        }
}

TEST_F(SoundAnalysisTest, ReadsTheFileInBlocks)
{
    support::writeSound(support::makeNoise(44100, 1, 40000), folder / "a.wav");
    std::vector<std::int64_t> frames;
    kvx::analyseSound(folder / "a.wav", {10, 10, 1}, [&](const kvx::SoundFormat& format, std::int64_t count) {
        EXPECT_EQ(format.frames, 40000);
        frames.push_back(count);
        return true;
    });
    EXPECT_EQ(frames, (std::vector<std::int64_t>{16384, 32768, 40000}));
}

TEST_F(SoundAnalysisTest, EndsIfTheCallerDoesNotContinue)
{
    support::writeSound(support::makeNoise(44100, 1, 40000), folder / "a.wav");
    int calls = 0;
    const auto analysis =
        kvx::analyseSound(folder / "a.wav", {10, 10, 1}, [&](const kvx::SoundFormat&, std::int64_t) {
            ++calls;
            return false;
        });
    EXPECT_FALSE(analysis);
    EXPECT_EQ(calls, 1);
}

TEST_F(SoundAnalysisTest, ShowsASineInTheRowOfItsFrequency)
{
    const struct {
        double frequency;
        int sampleRate, rows;
    } facts[] = {{1000, 44100, 405},  {1000, 44100, 50}, {1000, 44100, 3000}, {15000, 44100, 405},
                 {1000, 192000, 405}, {1000, 8000, 405}, {100, 1000, 200},    {30, 44100, 405}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.frequency) + " Hz of " + std::to_string(fact.sampleRate) +
                     ", rows " + std::to_string(fact.rows));
        const auto frames = std::size_t(fact.sampleRate) * 2;
        const auto analysis =
            analyse(makeSine(fact.frequency, 1, fact.sampleRate, frames), {100, fact.rows, 1});
        const double expected = fact.rows - fact.frequency / (fact.sampleRate / 2.0) * fact.rows;
        ASSERT_EQ(analysis.spectra.size(), 100u);
        // A window has a limited resolution: at most one row, or one of its bins.
        const double bin = double(fact.rows) / (kvx::windowFrames(fact.sampleRate) / 2.0);
        for (std::size_t column = 3; column < 97; ++column) {
            ASSERT_EQ(analysis.spectra[column].size(), std::size_t(fact.rows));
            EXPECT_NEAR(double(brightestRow(analysis.spectra[column])) + 0.5, expected, std::max(1.0, bin))
                << column;
        }
    }
}

TEST_F(SoundAnalysisTest, GivesASineOfFullScaleZeroDecibels)
{
    const double bin = 44100.0 / 2048;
    for (const int channels : {1, 2, 6}) {
        const auto spectra = analyse(makeSine(100 * bin, channels), {50, 200, channels}).spectra;
        for (std::size_t column = 2; column < 48; ++column) {
            const auto& levels = spectra[column];
            EXPECT_NEAR(levels[brightestRow(levels)], 0, 0.001) << "a frequency on a bin";
        }
    }
    const auto between = analyse(makeSine(100.5 * bin, 1), {50, 200, 1}).spectra[25];
    EXPECT_NEAR(between[brightestRow(between)], -1.42, 0.01) << "a frequency between two bins";
}

TEST_F(SoundAnalysisTest, ShowsSilenceAsTheLowestLevel)
{
    const auto analysis = analyse({44100, 2, std::vector<float>(44100)}, {40, 30, 2});
    for (const auto& levels : analysis.spectra)
        EXPECT_EQ(levels, std::vector<float>(30, float(kvx::silentDb)));
    for (const auto& wave : analysis.waves)
        for (const auto& column : wave)
            EXPECT_EQ(column.low == 0 && column.high == 0 && column.rms == 0, true);
}

TEST_F(SoundAnalysisTest, ShowsSamplesThatAreNoNumbersAsSilence)
{
    Sound sound = makeSine(1000, 1);
    std::fill(sound.samples.begin(), sound.samples.end(), std::numeric_limits<float>::quiet_NaN());
    for (const auto& levels : analyse(sound, {40, 30, 1}).spectra)
        EXPECT_EQ(levels, std::vector<float>(30, float(kvx::silentDb)));
}

TEST(SoundAnalysisWindow, IsAPowerOfTwoOfAboutATwentyFifthOfASecond)
{
    const struct {
        int sampleRate, frames;
    } facts[] = {{1000, 64},    {1600, 64},    {1625, 128},    {8000, 512},    {44100, 2048},
                 {48000, 2048}, {96000, 4096}, {192000, 8192}, {768000, 32768}};
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::windowFrames(fact.sampleRate), fact.frames) << fact.sampleRate;
}

} // namespace
