// Equaliser bands, balance, volumes and meters of the file player, measured in rendered samples.
#include "tests/endtoend/audio_objects.h"
#include "tests/endtoend/fileplayer/file_player.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace endtoend;
using support::Sound;

constexpr int rate = 44100;

using FilePlayerLevels = FilePlayerTest;

/// Centre frequencies of the equaliser bands, in hertz.
const double centres[] = {20,   25,   31.5, 40,   50,   63,    80,    100,   125,  160,  200,
                          250,  315,  400,  500,  630,  800,   1000,  1250,  1600, 2000, 2500,
                          3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000, 20000};

/// Return a sound with a different tone in each channel.
Sound tones(const std::vector<double>& hertz, double seconds, double amplitude)
{
    Sound sound{rate, int(hertz.size()), Samples(std::size_t(seconds * rate) * hertz.size())};
    for (std::size_t channel = 0; channel < hertz.size(); ++channel) {
        const Sound one = makeTone(rate, 1, seconds, hertz[channel], amplitude);
        for (std::size_t frame = 0; frame < one.frames(); ++frame)
            sound.samples[frame * hertz.size() + channel] = one.samples[frame];
    }
    return sound;
}

TEST_F(FilePlayerLevels, EachEqualiserBandRaisesOnlyItsFrequency)
{
    static_assert(std::size(centres) == 31);
    for (std::size_t band = 0; band < std::size(centres); ++band) {
        SCOPED_TRACE(testing::Message() << "band " << band << " at " << centres[band] << " Hz");
        const double centre = centres[band];
        // These two tones are two octaves below and above the band; for the lowest and highest bands, both on
        // one side.
        const double below = centre / 4 >= 10 ? centre / 4 : centre * 4;
        const double above = centre * 4 <= 20000 ? centre * 4 : centre / 4;
        FilePlayer player(loaded, write(tones({centre, below, above}, 2, 0.1)));
        std::vector<double> gains(31, 0.0);
        gains[band] = 12;
        player.object().call("updateEQ", host::Array::of(gains));
        player.play();
        player.render(rate);
        const Samples rendered = player.render(rate);
        const auto change = [&](int channel, double hertz) {
            return decibels(amplitudeAt(channelOf(rendered, 3, channel), hertz, rate) / 0.1);
        };
        EXPECT_NEAR(change(0, centre), 12, 0.5);
        EXPECT_NEAR(change(1, below), 0, 1);
        EXPECT_NEAR(change(2, above), 0, 1);
    }
}

TEST_F(FilePlayerLevels, EqualiserTakesSingleOrDoubleGainsOfAnyCount)
{
    const std::string path = write(makeTone(rate, 2, 1, 1000, 0.1));
    const struct {
        host::Array gains;
        double least, most; ///< limits of the gain at 1 kHz, in decibels; gains of neighbouring bands add up
        const char* why;
    } facts[] = {
        {host::Array::of(std::vector<double>(31, -20)), -60, -20, "all bands, double precision"},
        {host::Array::of(std::vector<float>(31, 6)), 6, 18, "all bands, single precision"},
        {host::Array::of(std::vector<double>(17, 12)), 0.5, 11, "17 bands: the next band would be 1 kHz"},
        {host::Array::of(std::vector<double>(18, 12)), 12, 24, "18 bands: the last band is 1 kHz"},
        {host::Array::of(std::vector<double>()), -0.001, 0.001, "no gains"},
        {host::Array::of(std::vector<float>(100, 0)), -0.001, 0.001, "more gains than bands"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        FilePlayer player(loaded, path);
        player.object().call("updateEQ", fact.gains);
        player.play();
        player.render(rate / 2);
        const double change = decibels(amplitudeAt(channelOf(player.render(16384), 2, 0), 1000, rate) / 0.1);
        EXPECT_GE(change, fact.least);
        EXPECT_LE(change, fact.most);
    }
}

TEST_F(FilePlayerLevels, FullBalanceSilencesOneChannelAndKeepsTheOther)
{
    const Sound sound = support::makeNoise(rate, 2, rate / 2);
    const std::string path = write(sound);
    for (const int silent : {0, 1}) {
        SCOPED_TRACE(silent);
        FilePlayer player(loaded, path);
        player.set("Pan", silent == 0 ? 1 : -1);
        player.play();
        const Samples rendered = player.render(rate / 2);
        expectSamples(channelOf(rendered, 2, silent), silence(sound.frames()));
        expectSamples(channelOf(rendered, 2, 1 - silent), channelOf(sound.samples, 2, 1 - silent));
    }
}

TEST_F(FilePlayerLevels, VolumesScaleSamplesExactly)
{
    const Sound sound = support::makeNoise(rate, 2, rate / 2);
    const std::string path = write(sound);
    const struct {
        double output, input;
        bool isEnabled;
        float factor;
    } facts[] = {{0.5, 1, true, 0.5f}, {1, 0.5, true, 0.5f}, {0.5, 0.5, true, 0.25f}, {0, 1, true, 0},
                 {1, 0, true, 0},      {1, 1, false, 0},     {0.25, 1, true, 0.25f},  {1, 1, true, 1}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << "output volume " << fact.output << ", input volume " << fact.input
                                        << ", enabled " << fact.isEnabled);
        FilePlayer player(loaded, path);
        player.set("OutputVolume", fact.output);
        player.object().set("InputVolume", 0, fact.input);
        player.object().set("InputEnabled", 0, fact.isEnabled);
        EXPECT_EQ(player.get("OutputVolume"), fact.output);
        EXPECT_EQ(player.object().get("InputVolume", 0).number(), fact.input);
        EXPECT_EQ(player.object().get("InputEnabled", 0).boolean(), fact.isEnabled);
        player.play();
        Samples expected = sound.samples;
        for (float& sample : expected) sample *= fact.factor;
        expectSamples(player.render(rate / 2), expected);
    }
}

TEST_F(FilePlayerLevels, MissingMixerInputsReturn0AndAnError)
{
    FilePlayer player(loaded, write(support::makeNoise(rate, 2, 4410)));
    for (const int input : {1, 1000}) {
        SCOPED_TRACE(input);
        EXPECT_EQ(player.object().get("InputVolume", input).number(), 0.0);
        EXPECT_NE(player.error(), 0);
        player.object().set("InputVolume", input, 0.5);
        EXPECT_NE(player.error(), 0);
        EXPECT_FALSE(player.object().get("InputEnabled", input).boolean());
        EXPECT_NE(player.error(), 0);
    }
}

// ---- meters ----

constexpr int peakHold = 4000, inputScope = 1; // numbers of a mixer parameter and a mixer scope

/// Return noise whose level changes four times a second, with a click of one sample at frame `click`.
Sound unevenNoise(std::size_t click, float clickHeight)
{
    Sound sound = support::makeNoise(rate, 2, rate * 3);
    for (std::size_t i = 0; i < sound.samples.size(); ++i)
        sound.samples[i] *= 0.05f * float(1 + i / 2 / (rate / 4) % 5);
    sound.samples[click * 2] = clickHeight;
    return sound;
}

TEST_F(FilePlayerLevels, MeterLevelIsTheAveragePowerOfTheLastTenthOfASecond)
{
    const Sound sound = unevenNoise(rate * 3 - 1, 0.9f);
    for (const std::uint32_t slice : {64u, 512u, 1156u, 4096u}) {
        SCOPED_TRACE(slice);
        FilePlayer::Setup setup;
        setup.sliceFrames = slice;
        FilePlayer player(loaded, write(sound), setup);
        EXPECT_EQ(player.get("MeterLevel"), -120) << "before the first slice";
        player.play();
        std::size_t played = 0;
        while (played + 7000 < sound.frames()) {
            const std::size_t now = (played == 0 ? 5000 : 6011) / slice * slice;
            player.render(now);
            played += now;
            double power = 0;
            for (std::size_t frame = played - std::min<std::size_t>(played, rate / 10); frame < played;
                 ++frame)
                power += double(sound.samples[frame * 2]) * double(sound.samples[frame * 2]);
            EXPECT_NEAR(player.get("MeterLevel"), 10 * std::log10(power / (rate / 10)), 0.5) << played;
            EXPECT_EQ(player.error(), 0);
        }
    }
}

TEST_F(FilePlayerLevels, MeterLevelOfASineIsThreeDecibelsBelowItsPeak)
{
    FilePlayer player(loaded, write(makeTone(rate, 2, 1, 441, 0.5)));
    player.play();
    player.render(rate / 2);
    EXPECT_NEAR(player.get("MeterLevel"), decibels(0.5) - decibels(std::sqrt(2.0)), 0.05);
}

TEST_F(FilePlayerLevels, MixerHoldsThePeakForASecond)
{
    constexpr std::size_t click = rate / 2;
    FilePlayer player(loaded, write(unevenNoise(click, 0.9f)));
    const AudioObjects audio(loaded.host);
    const auto peak = [&] {
        const double level =
            audio.object
                .call("AudioUnitGetParameter", player.object().get("MixerHandle"), peakHold, inputScope, 0)
                .number();
        EXPECT_EQ(audio.status(), "0");
        return level;
    };
    player.play();
    player.render(rate / 4 - rate / 4 % 512);
    EXPECT_NEAR(peak(), decibels(0.05), 0.5) << "noise before the click";
    player.render(rate / 4 + 1024); // render the frames with the click
    EXPECT_NEAR(peak(), decibels(0.9), 0.5);
    player.render(rate * 9 / 10);
    EXPECT_NEAR(peak(), decibels(0.9), 0.5) << "0.9 seconds after the click";
    player.render(rate / 2);
    EXPECT_LT(peak(), decibels(0.9) - 4) << "1.4 seconds after the click";
}

} // namespace
