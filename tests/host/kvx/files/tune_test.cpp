#include "host/kvx/files/tune.h"
#include "host/kvx/text/failure.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

TEST(Tune, IsShortBelowFullScaleAndSilentAtBothEnds)
{
    const auto tune = kvx::composeTune();
    const double seconds = double(tune.size()) / kvx::tuneChannels / kvx::tuneSampleRate;
    EXPECT_GT(seconds, 3);
    EXPECT_LT(seconds, 10);
    float peak = 0, sum = 0, step = 0;
    for (std::size_t i = 0; i < tune.size(); ++i) {
        peak = std::max(peak, std::fabs(tune[i]));
        sum += std::fabs(tune[i]);
        if (i >= 2) step = std::max(step, std::fabs(tune[i] - tune[i - 2]));
    }
    EXPECT_LE(peak, 0.7001f);
    EXPECT_GT(peak, 0.6f);
    EXPECT_GT(sum / float(tune.size()), 0.01f) << "the tune is audible";
    EXPECT_LT(step, 0.3f) << "no clicks";
    EXPECT_EQ(tune.front(), 0.0f);
    EXPECT_LT(std::fabs(tune.back()), 1e-4f);
}

TEST(Tune, IsTheSameEachTime) { EXPECT_EQ(kvx::composeTune(), kvx::composeTune()); }

TEST(Tune, IsWrittenAsPcm16)
{
    support::TemporaryFolder folder;
    kvx::writeTune(folder / "tune.wav");
    const auto sound = support::readSound(folder / "tune.wav");
    EXPECT_EQ(sound.sampleRate, kvx::tuneSampleRate);
    EXPECT_EQ(sound.channels, kvx::tuneChannels);
    const auto tune = kvx::composeTune();
    ASSERT_EQ(sound.samples.size(), tune.size());
    for (std::size_t i = 0; i < tune.size(); ++i) ASSERT_NEAR(sound.samples[i], tune[i], 1.5 / 32768) << i;
}

TEST(Tune, CannotBeWrittenIntoAMissingFolder)
{
    support::TemporaryFolder folder;
    EXPECT_THROW(kvx::writeTune(folder / "no/tune.wav"), kvx::Failure);
    EXPECT_EQ(folder.count(), 0u);
}

} // namespace
