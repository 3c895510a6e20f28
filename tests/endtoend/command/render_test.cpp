// `kvx render`: plays a file through all units of the file player into a sound file.
#include "host/kvx/play/equaliser_curve.h"
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/expected_samples.h"
#include "tests/support/tone_fit.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

namespace {

using namespace endtoend;
using support::Sound;
namespace fs = std::filesystem;

struct Render : KvxTest {
    support::ChildResult run(const std::string& from, const std::string& to, const Arguments& more = {}) const
    {
        return KvxTest::run(joined({"render", from, to}, more));
    }

    Sound render(const std::string& from, const Arguments& more = {})
    {
        const auto result = run(from, "out.wav", more);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.exitCode == 0 ? support::readSound(folder / "out.wav") : Sound();
    }

    Sound renderOf(const Sound& sound, const Arguments& more = {})
    {
        support::writeSound(sound, folder / "in.wav");
        return render("in.wav", more);
    }
};

void expectSame(const Sound& rendered, const Sound& expected)
{
    EXPECT_EQ(rendered.sampleRate, expected.sampleRate);
    EXPECT_EQ(rendered.channels, expected.channels);
    expectSamples(rendered.samples, expected.samples);
}

Sound partOf(const Sound& sound, std::size_t first, std::size_t frames)
{
    const auto channels = std::size_t(sound.channels);
    Sound part = {sound.sampleRate, sound.channels, {}};
    part.samples.assign(sound.samples.begin() + std::ptrdiff_t(first * channels),
                        sound.samples.begin() + std::ptrdiff_t((first + frames) * channels));
    return part;
}

TEST_F(Render, WithNeutralSettingsEqualsTheFile)
{
    const struct {
        int format;
        const char* name;
        int rate, channels;
        std::size_t frames;
    } facts[] = {
        {SF_FORMAT_WAV | SF_FORMAT_PCM_U8, "u8.wav", 8000, 1, 8000},
        {SF_FORMAT_WAV | SF_FORMAT_PCM_16, "16.wav", 44100, 2, 44100 * 3 + 1},
        {SF_FORMAT_WAV | SF_FORMAT_PCM_24, "24.wav", 48000, 6, 48000},
        {SF_FORMAT_WAV | SF_FORMAT_PCM_32, "32.wav", 96000, 2, 9601},
        {SF_FORMAT_WAV | SF_FORMAT_FLOAT, "float.wav", 192000, 1, 19201},
        {SF_FORMAT_WAV | SF_FORMAT_FLOAT, "one.wav", 44100, 2, 1},
        {SF_FORMAT_WAV | SF_FORMAT_FLOAT, "slice.wav", 44100, 2, 512},
        {SF_FORMAT_WAV | SF_FORMAT_FLOAT, "more.wav", 44100, 2, 513},
        {SF_FORMAT_AIFF | SF_FORMAT_PCM_16, "16.aiff", 44100, 1, 44100},
        {SF_FORMAT_CAF | SF_FORMAT_PCM_24, "24.caf", 44100, 6, 4410},
        {SF_FORMAT_FLAC | SF_FORMAT_PCM_16, "16.flac", 44100, 1, 44100},
        {SF_FORMAT_FLAC | SF_FORMAT_PCM_24, "24.flac", 48000, 2, 48001},
        {SF_FORMAT_FLAC | SF_FORMAT_PCM_16, "six.flac", 48000, 6, 4800},
        {SF_FORMAT_WAV | SF_FORMAT_FLOAT, "most.wav", 44100, 64, 4410},
        {SF_FORMAT_OGG | SF_FORMAT_VORBIS, "vorbis.ogg", 44100, 2, 44100},
        {SF_FORMAT_OGG | SF_FORMAT_OPUS, "opus.opus", 48000, 2, 48000},
        {SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, "layer3.mp3", 44100, 2, 44100},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        support::writeSound(support::makeNoise(fact.rate, fact.channels, fact.frames), folder / fact.name,
                            fact.format);
        expectSame(render(fact.name), support::readSound(folder / fact.name));
    }
}

TEST_F(Render, WritesTheSameBytesEachTime)
{
    support::writeSound(support::makeNoise(44100, 2, 44100), folder / "in.wav");
    const Arguments settings[] = {
        {},
        {"--rate", "0.7", "--pitch", "300", "--eq", "warm", "--pan", "0.3", "--volume", "0.5"},
        {"--unit", "varispeed", "--rate", "1.5", "--device-rate", "48000"},
        {"--loop", "0.1:0.3", "--duration", "1.5", "--background"},
    };
    for (const auto& more : settings) {
        SCOPED_TRACE(testing::PrintToString(more));
        ASSERT_EQ(run("in.wav", "1.wav", more).exitCode, 0);
        ASSERT_EQ(run("in.wav", "2.wav", more).exitCode, 0);
        EXPECT_TRUE(bytesOf(folder / "1.wav") == bytesOf(folder / "2.wav"));
    }
}

TEST_F(Render, LengthFollowsTheRatePlusTheTail)
{
    const std::size_t frames = 44101;
    support::writeSound(support::makeNoise(44100, 2, frames), folder / "in.wav");
    const struct {
        Arguments more;
        double factor;
        std::size_t longestTail; ///< upper limit of the tail of the rate unit, in frames
    } facts[] = {
        {{}, 1, 0},
        {{"--rate", "1", "--pitch", "0", "--eq", "flat"}, 1, 0},
        {{"--device-rate", "48000"}, 48000.0 / 44100, 0},
        {{"--start", "0.5"}, (44101 - 22050.0) / 44101, 0},
        {{"--duration", "0.25"}, 11025.0 / 44101, 0},
        {{"--duration", "0:00.25", "--start", "0:00.1"}, 11025.0 / 44101, 0},
        {{"--duration", "100"}, 1, 0},
        {{"--rate", "2"}, 0.5, 8820},
        {{"--rate", "0.5"}, 2, 8820},
        {{"--rate", "0.29"}, 1 / 0.29, 17640},
        {{"--pitch", "700"}, 1, 8820},
        {{"--unit", "varispeed", "--rate", "2"}, 0.5, 441},
        {{"--unit", "varispeed", "--pitch", "-1200"}, 2, 441},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.more));
        const auto least = std::size_t(std::llround(double(frames) * fact.factor));
        const std::size_t length = render("in.wav", fact.more).frames();
        EXPECT_GE(length, least);
        EXPECT_LE(length, least + fact.longestTail);
    }
}

// A sine of full scale, and a sine above the highest frequency of the result.
TEST_F(Render, DeviceRateAddsNoNoiseToATone)
{
    const struct {
        int from, to;
    } rates[] = {{44100, 48000}, {48000, 44100}, {96000, 44100}, {22050, 48000}};
    const auto renderTone = [&](int from, int to, double hertz) {
        const Sound tone = {from, 2, support::toneSamples(from, hertz, std::size_t(from) * 2, 2)};
        const Sound rendered = renderOf(tone, {"--device-rate", std::to_string(to)});
        return support::fitTone(rendered.samples, 2, 1, to, hertz, std::size_t(to / 2),
                                std::size_t(to) * 3 / 2);
    };
    for (const auto& rate : rates)
        for (const double hertz : {997.0, 0.45 * std::min(rate.from, rate.to)}) {
            SCOPED_TRACE(testing::Message() << rate.from << " to " << rate.to << ", " << hertz << " Hz");
            const support::ToneFit fit = renderTone(rate.from, rate.to, hertz);
            EXPECT_NEAR(fit.level, 0, 0.1);
            EXPECT_LT(fit.residue, -110);
        }
    const support::ToneFit alias = renderTone(48000, 44100, 23000);
    EXPECT_LT(alias.level, -100);
    EXPECT_LT(alias.residue, -100);
}

TEST_F(Render, StartAndDurationSelectAPartOfTheFile)
{
    const Sound sound = support::makeNoise(44100, 2, 44100);
    expectSame(renderOf(sound, {"--start", "0.5"}), partOf(sound, 22050, 22050));
    expectSame(renderOf(sound, {"--duration", "0.25"}), partOf(sound, 0, 11025));
}

TEST_F(Render, RepeatsALoopToTheExactFrame)
{
    const std::size_t length = 20011;
    const Sound sound = support::makeNoise(44100, 2, length);
    support::writeSound(sound, folder / "in.wav");
    const struct {
        std::size_t in, out, start;
        const char* why;
    } facts[] = {
        {4099, 10007, 4099, "points between slices"},
        {1024, 4096, 1024, "points at slices"},
        {4099, 10007, 9990, "a start shortly before OUT"},
        {0, length, 0, "the whole file"},
        {10007, length, 10007, "OUT at the end of the file"},
        {length - 1, length, length - 1, "the last frame"},
        {12788, 12789, 12788, "one frame, whose time rounds down"},
        {500, 511, 505, "many repeats in a slice"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const std::size_t frames = 45000;
        const auto time = [](std::size_t frame) { return std::to_string(double(frame) / 44100); };
        Sound expected = {44100, 2, {}};
        for (std::size_t i = 0, at = fact.start; i < frames; ++i) {
            for (std::size_t channel = 0; channel < 2; ++channel)
                expected.samples.push_back(sound.samples[at * 2 + channel]);
            if (++at == fact.out) at = fact.in;
        }
        expectSame(render("in.wav", {"--loop", time(fact.in) + ":" + time(fact.out), "--start",
                                     time(fact.start), "--duration", time(frames)}),
                   expected);
    }
}

TEST_F(Render, RoundsARateToTheNearestHundredth)
{
    const Sound sound = support::makeNoise(44100, 2, 44100);
    const Sound slower = renderOf(sound, {"--rate", "1.239"});
    expectSame(slower, render("in.wav", {"--rate", "1.24"}));
    expectSame(render("in.wav", {"--rate", "1.244"}), slower);
    expectSame(render("in.wav", {"--rate", "0.9951"}), sound);
}

TEST_F(Render, ChannelMapSelectsFileChannels)
{
    const Sound sound = support::makeNoise(44100, 2, 4410);
    const struct {
        const char* map;
        std::vector<int> channels;
    } facts[] = {{"1,0", {1, 0}}, {"0,-1", {0, -1}}, {"1", {1}}, {"0,0,1,1", {0, 0, 1, 1}}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.map);
        Sound expected = {44100, int(fact.channels.size()), {}};
        for (std::size_t frame = 0; frame < sound.frames(); ++frame)
            for (int channel : fact.channels)
                expected.samples.push_back(channel < 0 ? 0.0f
                                                       : sound.samples[frame * 2 + std::size_t(channel)]);
        expectSame(renderOf(sound, {"--channel-map", fact.map}), expected);
    }
}

TEST_F(Render, VolumeAndPanScaleSamples)
{
    const Sound sound = support::makeNoise(44100, 2, 44100);
    const Sound half = renderOf(sound, {"--volume", "0.5"});
    ASSERT_EQ(half.frames(), sound.frames());
    for (std::size_t i = 0; i < half.samples.size(); ++i)
        ASSERT_EQ(half.samples[i], sound.samples[i] * 0.5f) << i;

    const Sound left = render("in.wav", {"--pan", "-1"});
    ASSERT_EQ(left.frames(), sound.frames());
    for (std::size_t frame = 0; frame < left.frames(); ++frame) {
        ASSERT_EQ(left.samples[frame * 2], sound.samples[frame * 2]) << frame;
        ASSERT_EQ(left.samples[frame * 2 + 1], 0.0f) << frame;
    }
}

// The rendered samples are those that `kvx play` plays on a stereo device.
TEST_F(Render, PanAndChannelMapTreatMonoAsStereo)
{
    const Sound sound = support::makeNoise(44100, 1, 44100);
    support::writeSound(sound, folder / "in.wav");
    const struct {
        Arguments more;
        std::vector<float> gains; ///< gain of each rendered channel
    } facts[] = {
        {{}, {1}},
        {{"--pan", "0"}, {1}},
        {{"--pan", "-1"}, {1, 0}},
        {{"--pan", "1"}, {0, 1}},
        {{"--channel-map", "0"}, {1}},
        {{"--channel-map", "0,1"}, {1, 1}},
        {{"--channel-map", "-1,1"}, {0, 1}},
        {{"--channel-map", "1,0,-1", "--pan", "1"}, {1, 0, 0}},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.more));
        Sound expected = {44100, int(fact.gains.size()), {}};
        for (float sample : sound.samples)
            for (float gain : fact.gains) expected.samples.push_back(sample * gain);
        expectSame(render("in.wav", fact.more), expected);
        if (fact.gains.size() != 2) continue;
        const Arguments play = {"play", "--fast", "in.wav", "--capture", "played.wav"};
        EXPECT_EQ(KvxTest::run(joined(play, fact.more)).exitCode, 0);
        Sound played = support::readSound(folder / "played.wav");
        ASSERT_GE(played.frames(), expected.frames());
        expectSame(partOf(played, 0, expected.frames()), expected);
    }
}

TEST_F(Render, RefusesAPlaylist)
{
    std::ofstream(folder / "list.m3u") << "in.wav\n";
    const auto result = run("list.m3u", "out.wav");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              "kvx: render: list.m3u is a playlist, and render takes one sound file; name a file of "
              "the playlist\n");
    EXPECT_EQ(folder.count(), 1u);
}

TEST_F(Render, PrintsTheResultUnlessQuiet)
{
    support::writeSound(support::makeNoise(8000, 1, 8000), folder / "in.wav");
    EXPECT_EQ(run("in.wav", "out.wav").out, "Rendered out.wav: WAV, 32-bit float, 8000 Hz, mono, 0:01.0\n");
    EXPECT_EQ(run("in.wav", "out.wav", {"--quiet"}).out, "");
    EXPECT_EQ(folder.count(), 2u);
}

TEST_F(Render, RefusesInOneLineAndLeavesNoFile)
{
    const Sound sound = support::makeNoise(44100, 1, 44100);
    support::writeSound(sound, folder / "good.wav");
    support::writeSound(support::makeNoise(44100, 3, 441), folder / "three.wav");
    support::writeSound({44100, 2, {}}, folder / "silent.wav");
    std::ofstream(folder / "text.wav") << "Dear reader,\nthis is not a sound.\n";
    std::ofstream(folder / "empty.wav");
    support::writeSound(support::makeNoise(3, 1, 10), folder / "slow.wav");
    fs::create_directory(folder / "folder");
    const struct {
        Arguments arguments;
        int exitCode;
        const char* message;
    } facts[] = {
        {{"missing.wav", "out.wav"}, 1, "check the name"},
        {{"folder", "out.wav"}, 1, "is a folder"},
        {{"/dev/null", "out.wav"}, 1, "not a plain file"},
        {{"text.wav", "out.wav"}, 1, "cannot be decoded"},
        {{"empty.wav", "out.wav"}, 1, "is empty"},
        {{"silent.wav", "out.wav"}, 1, "holds no sound"},
        {{"slow.wav", "out.wav"}, 1, "convert it to WAV, of 1000 to 768000 Hz and up to 1024 channels"},
        {{"good.wav", "good.wav"}, 1, "name another file"},
        {{"good.wav", "folder"}, 1, "name a file in it"},
        {{"good.wav", "no/such/out.wav"}, 1, "folder that exists"},
        {{"good.wav", "out.wav", "--start", "1"}, 1, "give a time before 0:01"},
        {{"good.wav", "out.wav", "--loop", "0:1.5", "--duration", "1"}, 1, "give a time up to 0:01"},
        {{"three.wav", "out.wav", "--pan", "1"}, 1, "leave it out"},
        {{"good.wav", "out.wav", "--channel-map", "0,2"}, 1, "name channels from 0 to 1"},
        {{"good.wav", "out.wav", "--library", "text.wav"}, 1, "text.wav"},
        {{"good.wav", "out.wav", "--loop", "0:0.5", "--duration", "1000000"}, 1, "shorter --duration"},
        {{"good.wav"}, 2, "OUT.wav"},
        {{}, 2, "FILE"},
        {{"good.wav", "out.wav", "--loop", "0:0.5"}, 2, "--duration"},
        {{"good.wav", "out.wav", "--rate", "33"}, 2, "from 0.04 to 32"},
        {{"good.wav", "out.wav", "--device-rate", "999"}, 2, "1000"},
        {{"good.wav", "out.wav", "--device-rate", "44100.5"}, 2, "whole number"},
        {{"good.wav", "out.wav", "--duration", "0"}, 2, "0.001"},
    };
    const std::size_t before = folder.count();
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        const auto result = KvxTest::run(joined({"render"}, fact.arguments));
        EXPECT_EQ(result.exitCode, fact.exitCode) << result.err;
        EXPECT_NE(result.err.find(fact.message), std::string::npos) << result.err;
        expectMessage(result, "render");
        EXPECT_EQ(folder.count(), before) << "a new file was left";
    }
    expectSame(support::readSound(folder / "good.wav"), sound);
}

TEST_F(Render, KeepsAnEarlierResultWhenStopped)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "in.wav");
    std::ofstream(folder / "out.wav") << "earlier";
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        support::Child child(kvxCommand({"render", "in.wav", "out.wav", "--rate", "0.04"}), {},
                             folder.path());
        while (child.isRunning() && folder.count() < 3) std::this_thread::yield();
        child.send(signal);
        const auto result = child.wait();
        EXPECT_EQ(result.exitCode, 128 + signal) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_NE(result.out.find("Stopped; nothing was written."), std::string::npos) << result.out;
        EXPECT_EQ(bytesOf(folder / "out.wav"), "earlier");
        EXPECT_EQ(folder.count(), 2u);
    }
}

TEST_F(Render, KeepsAnEarlierResultWhenTheDiskIsFull)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 2), folder / "in.wav");
    std::ofstream(folder / "out.wav") << "earlier";
    const auto result = support::runChild(
        {"sh", "-c", "trap '' XFSZ; ulimit -f 100; exec " + std::string(kvxPath) + " render in.wav out.wav"},
        {}, folder.path());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              "kvx: render: out.wav cannot be written: File too large; write to a disk that takes larger "
              "files, or raise the limit with `ulimit -f unlimited`\n");
    EXPECT_EQ(bytesOf(folder / "out.wav"), "earlier");
    EXPECT_EQ(folder.count(), 2u);
}

struct RenderEqualiser : Render {
    /// Measure how much louder the equaliser makes a tone, in dB, if the gain of each of `bands` is 12 dB.
    double gainAt(double hertz, const std::vector<std::size_t>& bands)
    {
        kvx::Gains gains = {};
        for (const std::size_t band : bands) gains[band] = 12;
        std::string list;
        for (const double gain : gains) list += (list.empty() ? "" : ",") + std::to_string(gain);
        constexpr int rate = 96000;
        const Sound out =
            renderOf({rate, 1, support::toneSamples(rate, hertz, 2 * rate, 1, 0.1)}, {"--eq", list});
        return support::fitTone(out.samples, 1, 0, rate, hertz, rate, 2 * rate).level - 20 * std::log10(0.1);
    }
};

TEST_F(RenderEqualiser, HasItsBandsAtTheListedCentres)
{
    for (const std::size_t band : {0u, 6u, 12u, 17u, 24u, 30u})
        EXPECT_NEAR(gainAt(kvx::bandCentres[band], {band}), 12, 0.02) << kvx::bandCentres[band];
}

TEST_F(RenderEqualiser, AddsUpNeighbouringBandsAsTheListSays)
{
    for (const std::size_t band : {6u, 17u})
        for (const std::size_t centre : {band, band + 1})
            EXPECT_NEAR(gainAt(kvx::bandCentres[centre], {band, band + 1}), 14.9, 0.06)
                << kvx::bandCentres[centre];
    const double high = gainAt(kvx::bandCentres[24], {24, 25});
    EXPECT_TRUE(high > 14 && high < 14.85) << high;
    EXPECT_NE(runKvx({"play", "--eq", "list"})
                  .out.find("two at +12 dB give +14.9 dB at both centres, and a little less above 4 kHz"),
              std::string::npos);
}

TEST_F(Render, EqListPrintsTheEqualiserCurves)
{
    for (const char* command : {"render", "play"}) {
        const auto result = runKvx({command, "--eq", "list"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_NE(result.out.find("bass       more below 200 Hz\n"), std::string::npos) << result.out;
    }
}

} // namespace
