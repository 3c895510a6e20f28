// Rate and pitch of the file player: a rendered tone has the stated frequency and duration.
#include "tests/endtoend/fileplayer/file_player.h"

#include <cmath>

namespace {

using namespace endtoend;

constexpr double seconds = 2;
constexpr double hertz = 440;

struct Fact {
    double rate, cents;
    double pitchFactor, durationFactor;
};

struct FilePlayerRates : FilePlayerTest {
    /// Render a tone of two seconds with a rate and a pitch, and measure its frequency, duration and level.
    void measure(int rateUnit, const Fact& fact, int sampleRate, int channels)
    {
        SCOPED_TRACE(testing::Message() << "rate " << fact.rate << ", " << fact.cents << " cents, "
                                        << sampleRate << " Hz, " << channels << " channels");
        const std::string path = write(makeTone(sampleRate, channels, seconds, hertz));
        FilePlayer::Setup setup;
        setup.timePitchUnit = rateUnit;
        FilePlayer player(loaded, path, setup);
        if (fact.cents != 0) player.set("PitchRate", fact.cents);
        if (fact.rate != 1) player.set("TimeRate", fact.rate);
        player.play();

        const double expected = seconds * fact.durationFactor * sampleRate;
        const Samples rendered = player.render(std::size_t(expected) + std::size_t(sampleRate));
        for (int channel = 0; channel < channels; ++channel) {
            const Samples one = channelOf(rendered, channels, channel);
            EXPECT_NEAR(double(framesAbove(one, 0.1f)), expected, 0.01 * expected);
            const Samples middle = partOf(one, 1, std::size_t(expected * 0.2), std::size_t(expected * 0.6));
            EXPECT_NEAR(frequencyOf(middle, sampleRate), hertz * fact.pitchFactor,
                        0.005 * hertz * fact.pitchFactor);
            EXPECT_NEAR(decibels(amplitudeAt(middle, frequencyOf(middle, sampleRate), sampleRate)),
                        decibels(0.5), 1);
        }
    }
};

double ratioOf(double cents) { return std::exp2(cents / 1200); }

TEST_F(FilePlayerRates, TimeRateChangesDurationAndKeepsPitch)
{
    for (const double rate : {0.5, 0.75, 1.25, 1.5, 2.0}) measure(1, {rate, 0, 1, 1 / rate}, 44100, 2);
    measure(1, {0.75, 0, 1, 1 / 0.75}, 48000, 1);
    measure(1, {1.5, 0, 1, 1 / 1.5}, 22050, 1);
    measure(0, {1.25, 0, 1, 1 / 1.25}, 96000, 1);
}

TEST_F(FilePlayerRates, PitchRateChangesPitchAndKeepsDuration)
{
    for (const double cents : {1200.0, -1200.0, 300.0, -300.0})
        measure(1, {1, cents, ratioOf(cents), 1}, 44100, 2);
    measure(1, {1, 1200, 2, 1}, 48000, 1);
}

TEST_F(FilePlayerRates, TimeRateAndPitchRateCombine)
{
    measure(1, {0.5, 1200, 2, 2}, 44100, 1);
    measure(1, {2, -300, ratioOf(-300), 0.5}, 44100, 1);
}

TEST_F(FilePlayerRates, VarispeedChangesDurationAndPitchTogether)
{
    for (const double rate : {0.5, 0.75, 1.25, 1.5, 2.0}) measure(2, {rate, 0, rate, 1 / rate}, 44100, 2);
    for (const double cents : {1200.0, -1200.0, 300.0, -300.0})
        measure(2, {1, cents, ratioOf(cents), 1 / ratioOf(cents)}, 44100, 1);
}

TEST_F(FilePlayerRates, RateUnitsNeitherDelayTheBeginningNorCutTheEnd)
{
    // The sound has a burst at each end, and silence between the bursts.
    support::Sound sound = makeTone(44100, 1, 1, 1000);
    std::fill(sound.samples.begin() + 2205, sound.samples.end() - 2205, 0.0f);
    support::writeSound(sound, folder / "bursts.wav");
    for (const int unit : {1, 2})
        for (const double rate : {0.5, 1.0, 1.5}) {
            SCOPED_TRACE(testing::Message() << "unit " << unit << ", rate " << rate);
            FilePlayer::Setup setup;
            setup.timePitchUnit = unit;
            FilePlayer player(loaded, folder / "bursts.wav", setup);
            if (rate != 1) player.set("TimeRate", rate);
            player.play();
            const Samples rendered = player.render(std::size_t(44100 / rate) + 22050);
            const auto energy = [&rendered](double from, double until) {
                double sum = 0;
                for (auto i = std::size_t(from * 44100); i < std::size_t(until * 44100); ++i)
                    sum += double(rendered[i]) * double(rendered[i]);
                return sum / 44100;
            };
            const double burst = 0.05 / rate, end = 1 / rate, each = 0.5 * 0.5 / 2 * burst;
            EXPECT_GT(energy(0, burst + 0.02), 0.7 * each);
            EXPECT_GT(energy(end - burst - 0.02, end + 0.05), 0.7 * each);
            EXPECT_LT(energy(burst + 0.1, end - burst - 0.1), 0.02 * each) << "silence between the bursts";
            EXPECT_LT(energy(end + 0.1, end + 0.4), 0.001 * each) << "silence after the second burst";
        }
}

TEST_F(FilePlayerRates, RateUnitCanChangeDuringPlayback)
{
    support::writeSound(makeTone(44100, 1, 6, hertz), folder / "tone.wav");
    FilePlayer player(loaded, folder / "tone.wav");
    player.set("TimeRate", 1.5);
    player.play();
    const struct {
        int set, reads;
        double expected;
        const char* why;
    } facts[] = {
        {1, 1, hertz, "time-pitch unit: the pitch stays"},
        {2, 2, hertz * 1.5, "varispeed: the pitch follows the rate"},
        {0, 1, hertz, "0 selects unit 1"},
        {3, 1, hertz, "no unit has this number: the unit stays"},
        {2, 2, hertz * 1.5, "varispeed again"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        player.set("TimePitchUnit", fact.set);
        EXPECT_EQ(player.get("TimePitchUnit"), fact.reads);
        player.render(11025); // discard the frames that the former time-pitch unit has buffered
        EXPECT_NEAR(frequencyOf(player.render(11025), 44100), fact.expected, 0.005 * fact.expected);
    }
}

TEST_F(FilePlayerRates, PropertiesReadBackTheLimitedAndRoundedValue)
{
    support::writeSound(support::makeNoise(44100, 2, 4410), folder / "x.wav");
    const FilePlayer player(loaded, folder / "x.wav");
    const struct {
        const char* property;
        double set, reads;
        const char* why;
    } facts[] = {
        {"TimeRate", 1.239, 1.23f, "rounded down to hundredths"},
        {"TimeRate", 0.03, 0.03125f, "the minimum"},
        {"TimeRate", 33, 32, "the maximum"},
        {"TimeRate", -0.001, 0.03125f, "the minimum, for negative rates"},
        {"PitchRate", 2401, 2400, "the maximum"},
        {"PitchRate", -2401, -2400, "the minimum"},
        {"PitchRate", 0.1, 0.1f, "rounded to single precision"},
        {"Overlap", 2, 3, "the minimum"},
        {"Overlap", 33, 32, "the maximum"},
        {"OutputVolume", 0.25, 0.25, "exact"},
        {"Pan", -0.5, -0.5, "exact"},
        {"Pan", 2, 1, "the maximum"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.property << " " << fact.set << ": " << fact.why);
        player.set(fact.property, fact.set);
        EXPECT_EQ(player.error(), 0);
        EXPECT_EQ(player.get(fact.property), fact.reads);
        EXPECT_EQ(player.error(), 0);
    }
    EXPECT_TRUE(player.object().get("EnablePeakLocking").boolean());
    player.object().set("EnablePeakLocking", false);
    EXPECT_FALSE(player.object().get("EnablePeakLocking").boolean());
}

} // namespace
