// The formats in which `kvx render` writes its result, and the level of the result.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/expected_samples.h"

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

constexpr int wav = SF_FORMAT_WAV, wavex = SF_FORMAT_WAVEX, aiff = SF_FORMAT_AIFF, caf = SF_FORMAT_CAF,
              flac = SF_FORMAT_FLAC, isFloat = SF_FORMAT_FLOAT, is16 = SF_FORMAT_PCM_16,
              is24 = SF_FORMAT_PCM_24, is32 = SF_FORMAT_PCM_32, vorbis = SF_FORMAT_OGG | SF_FORMAT_VORBIS,
              opus = SF_FORMAT_OGG | SF_FORMAT_OPUS, mp3 = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;

SF_INFO infoOf(const std::string& path)
{
    SF_INFO info = {};
    sf_close(sf_open(path.c_str(), SFM_READ, &info));
    info.format &= ~SF_FORMAT_ENDMASK;
    return info;
}

Sound scaled(Sound sound, float factor)
{
    for (float& sample : sound.samples) sample *= factor;
    return sound;
}

float peakOf(const Sound& sound)
{
    float peak = 0;
    for (float sample : sound.samples) peak = std::max(peak, std::fabs(sample));
    return peak;
}

/// The greatest difference between two sounds.
float distance(const Sound& one, const Sound& other)
{
    EXPECT_EQ(one.samples.size(), other.samples.size());
    float greatest = 0;
    for (std::size_t i = 0; i < std::min(one.samples.size(), other.samples.size()); ++i)
        greatest = std::max(greatest, std::fabs(one.samples[i] - other.samples[i]));
    return greatest;
}

struct ResultFormats : KvxTest {
    ResultFormats() { support::writeSound(support::makeSweep(44100, 2, 44100), folder / "in.wav"); }

    support::ChildResult render(const Arguments& arguments) const
    {
        return run(joined({"render"}, arguments));
    }

    /// Render and return the printed lines.
    std::string rendered(const Arguments& arguments) const
    {
        const auto result = render(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    support::ChildResult shell(const std::string& script) const
    {
        return support::runChild({"bash", "-c", script}, {{"kvx", kvxPath}}, folder.path());
    }
};

TEST_F(ResultFormats, FollowTheExtensionAndTheOptions)
{
    const struct {
        const char* name;
        Arguments more;
        int format, rate;
        const char* printed;
    } facts[] = {
        {"out.wav", {}, wav | isFloat, 44100, "WAV, 32-bit float, "},
        {"out.WAV", {}, wav | isFloat, 44100, "WAV, 32-bit float, "},
        {"out.wave", {"--bits", "16"}, wav | is16, 44100, "WAV, 16 bits, "},
        {"out.wav", {"--bits", "24"}, wavex | is24, 44100, "WAV, 24 bits, "},
        {"out.wav", {"--bits", "32"}, wavex | is32, 44100, "WAV, 32 bits, "},
        {"out.wav", {"--bits", "float"}, wav | isFloat, 44100, "WAV, 32-bit float, "},
        {"out", {}, wav | isFloat, 44100, "WAV, 32-bit float, "},
        {"out", {"--format", "flac"}, flac | is24, 44100, "FLAC, 24 bits, "},
        {"out.xyz", {"--format", "aiff"}, aiff | isFloat, 44100, "AIFF, 32-bit float, "},
        {"out.aiff", {}, aiff | isFloat, 44100, "AIFF, 32-bit float, "},
        {"out.aif", {"--bits", "24"}, aiff | is24, 44100, "AIFF, 24 bits, "},
        {"out.aifc", {"--bits", "16"}, aiff | is16, 44100, "AIFF, 16 bits, "},
        {"out.caf", {}, caf | isFloat, 44100, "CAF, 32-bit float, "},
        {"out.caf", {"--bits", "32"}, caf | is32, 44100, "CAF, 32 bits, "},
        {"out.flac", {}, flac | is24, 44100, "FLAC, 24 bits, "},
        {"out.flac", {"--bits", "16"}, flac | is16, 44100, "FLAC, 16 bits, "},
        {"out.ogg", {}, vorbis, 44100, "Ogg Vorbis, "},
        {"out.oga", {}, vorbis, 44100, "Ogg Vorbis, "},
        {"out.opus", {}, opus, 48000, "Opus, "},
        {"out.opus", {"--device-rate", "24000"}, opus, 24000, "Opus, "},
        {"out.Mp3", {}, mp3, 44100, "MP3, "},
        {"out.mp3", {"--device-rate", "32000"}, mp3, 32000, "MP3, "},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name + testing::PrintToString(fact.more));
        const std::string printed = rendered(joined({"in.wav", fact.name}, fact.more));
        EXPECT_EQ(printed, "Rendered " + std::string(fact.name) + ": " + fact.printed +
                               std::to_string(fact.rate) + " Hz, stereo, 0:01.0\n");
        const SF_INFO info = infoOf(folder / fact.name);
        EXPECT_EQ(info.format, fact.format);
        EXPECT_EQ(info.samplerate, fact.rate);
        EXPECT_EQ(info.channels, 2);
        EXPECT_EQ(info.frames, fact.rate);
        fs::remove(folder / fact.name);
    }
    EXPECT_EQ(folder.count(), 1u);
}

TEST_F(ResultFormats, HoldTheRenderedSound)
{
    const struct {
        const char* name;
        int channels;
        Arguments more;
        float tolerance; ///< greatest difference from a 32-bit float WAV
    } facts[] = {
        {"out.wav", 1, {"--bits", "16"}, 1.5f / (1 << 15)},
        {"out.wav", 1, {"--bits", "16", "--no-dither"}, 0.5f / (1 << 15)},
        {"out.wav", 2, {"--bits", "24"}, 1.5f / (1 << 23)},
        {"out.wav", 6, {"--bits", "24", "--no-dither"}, 0.5f / (1 << 23)},
        {"out.aiff", 6, {}, 0},
        {"out.caf", 64, {}, 0},
        {"out.flac", 1, {"--bits", "16"}, 1.5f / (1 << 15)},
        {"out.flac", 8, {}, 1.5f / (1 << 23)},
        {"out.ogg", 2, {}, 0.03f},
        {"out.mp3", 1, {}, 0.03f},
        {"out.mp3", 2, {}, 0.03f},
        {"out.opus", 2, {}, 0.03f},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name + std::to_string(fact.channels) + testing::PrintToString(fact.more));
        // At 48000 Hz, Opus needs no rate conversion. Encoders keep a low tone without an abrupt end.
        Sound sound = support::makeSweep(48000, fact.channels, 24001);
        if (fact.tolerance > 0.01f)
            for (std::size_t i = 0; i < sound.samples.size(); ++i) {
                const auto frame = float(i / std::size_t(fact.channels));
                sound.samples[i] = 0.5f * std::sin(frame * 0.05f) * std::sin(frame * 3.14159f / 24000);
            }
        support::writeSound(sound, folder / "sound.wav");
        rendered(joined({"sound.wav", fact.name}, fact.more));
        const Sound read = support::readSound(folder / fact.name);
        EXPECT_EQ(read.channels, fact.channels);
        EXPECT_LE(distance(read, sound), fact.tolerance);
    }
}

TEST_F(ResultFormats, GiveBackIntegersUnchanged)
{
    const struct {
        int from;
        const char* bits;
    } facts[] = {{is16, "16"}, {is16, "24"}, {is16, "32"}, {is24, "24"}, {is24, "32"}};
    for (const auto& fact : facts) {
        support::writeSound(support::makeNoise(44100, 2, 20001), folder / "exact.wav", wav | fact.from);
        const Sound sound = support::readSound(folder / "exact.wav");
        for (const std::string name : {"out.wav", "out.aiff", "out.caf", "out.flac"}) {
            if (name == "out.flac" && fact.bits == std::string("32")) continue;
            for (const Arguments& more : {Arguments{}, Arguments{"--no-dither"}}) {
                SCOPED_TRACE(name + fact.bits + testing::PrintToString(more));
                rendered(joined({"exact.wav", name, "--bits", fact.bits}, more));
                expectSamples(support::readSound(folder / name).samples, sound.samples);
            }
        }
    }
}

TEST_F(ResultFormats, AreTheSameBytesEachTime)
{
    for (const std::string format : {"wav", "aiff", "caf", "flac", "mp3"}) {
        const Arguments more = {"--format", format, "--rate", "0.9"};
        rendered(joined({"in.wav", "1"}, more));
        rendered(joined({"in.wav", "2"}, more));
        EXPECT_TRUE(bytesOf(folder / "1") == bytesOf(folder / "2")) << format;
    }
}

// Vorbis and Opus store the channels of 5.1 as left, centre, right, back left, back right, low frequencies.
TEST_F(ResultFormats, StoreChannelsInTheOrderOfTheFormat)
{
    const float peaks[] = {0.02f, 0.04f, 0.08f, 0.16f, 0.32f, 0.64f}; // of the channels, in the order of WAV
    Sound sound = {48000, 6, {}};
    for (int i = 0; i < 48000; ++i)
        for (float peak : peaks) sound.samples.push_back(peak * std::sin(float(i) * 0.005f));
    support::writeSound(sound, folder / "six.wav");
    const struct {
        const char* name;
        std::vector<int> channels; ///< channel of the WAV file for each channel of this file
    } facts[] = {
        {"out.wav", {0, 1, 2, 3, 4, 5}}, {"out.flac", {0, 1, 2, 3, 4, 5}}, {"out.aiff", {0, 1, 2, 3, 4, 5}},
        {"out.caf", {0, 1, 2, 3, 4, 5}}, {"out.ogg", {0, 2, 1, 4, 5, 3}},  {"out.opus", {0, 2, 1, 4, 5, 3}},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        rendered({"six.wav", fact.name});
        const Sound read = support::readSound(folder / fact.name);
        ASSERT_EQ(read.channels, 6);
        for (std::size_t channel = 0; channel < 6; ++channel) {
            float peak = 0;
            for (std::size_t frame = 6000; frame < 42000; ++frame)
                peak = std::max(peak, read.samples[frame * 6 + channel]);
            EXPECT_NEAR(peak / peaks[fact.channels[channel]], 1, 0.4) << channel;
        }
    }
}

TEST_F(ResultFormats, AreRefusedWithTheNearestPossible)
{
    support::writeSound(support::makeNoise(192000, 6, 1000), folder / "six.wav");
    support::writeSound(support::makeNoise(384000, 64, 100), folder / "many.wav");
    support::writeSound(support::makeNoise(70001, 1, 100), folder / "odd.wav");
    const struct {
        Arguments arguments;
        int exitCode;
        const char* message;
    } facts[] = {
        {{"in.wav", "out.xyz"},
         2,
         "out.xyz: kvx writes no .xyz files; name a file that ends in .wav, .aiff, .caf, .flac, .ogg, .opus "
         "or "
         ".mp3, or choose the format with --format; --help lists the arguments"},
        {{"in.wav", "out", "--format", "w64"},
         2,
         "--format: w64 is not one of wav, aiff, caf, flac, ogg, opus, mp3; --help lists the arguments"},
        {{"in.wav", "out.wav", "--bits", "8"},
         2,
         "--bits: 8 is not one of 16, 24, 32, float; --help lists the arguments"},
        {{"in.wav", "out.flac", "--bits", "float"},
         2,
         "--bits float: FLAC does not hold such samples; give --bits 24 or 16; --help lists the arguments"},
        {{"in.wav", "out.flac", "--bits", "32"},
         2,
         "--bits 32: FLAC does not hold such samples; give --bits 24 or 16; --help lists the arguments"},
        {{"in.wav", "out.mp3", "--bits", "16"},
         2,
         "--bits 16: MP3 encodes its samples without a number of bits; leave --bits out; --help lists the "
         "arguments"},
        {{"six.wav", "out.mp3"},
         1,
         "out.mp3: MP3 holds at most 2 channels, not 6; give `--channel-map 0,1`, or write a .wav file"},
        {{"six.wav", "out.mp3", "--channel-map", "0,1"},
         1,
         "out.mp3: MP3 cannot have 192000 Hz; give `--device-rate 48000`, or write a .wav file"},
        {{"in.wav", "out.opus", "--device-rate", "44100"},
         1,
         "out.opus: Opus cannot have 44100 Hz; give `--device-rate 48000`, or write a .wav file"},
        {{"in.wav", "out.opus", "--device-rate", "11025"},
         1,
         "out.opus: Opus cannot have 11025 Hz; give `--device-rate 12000`, or write a .wav file"},
        {{"many.wav", "out.flac"},
         1,
         "out.flac: FLAC holds at most 8 channels, not 64; give `--channel-map 0,1,2,3,4,5,6,7`, or write a "
         ".wav "
         "file"},
        {{"many.wav", "out.ogg", "--channel-map", "0"},
         1,
         "out.ogg: Ogg Vorbis cannot have 384000 Hz; give `--device-rate 200000`, or write a .wav file"},
        {{"odd.wav", "out.flac"},
         1,
         "out.flac: FLAC cannot have 70001 Hz; give `--device-rate 70000`, or write a .wav file"},
        {{"in.wav", "out.aiff", "--loop", "0:1", "--duration", "100000"},
         1,
         "out.aiff would be longer than an AIFF file can be; give a shorter --duration, or write a .caf or "
         ".flac "
         "file"},
    };
    const std::size_t before = folder.count();
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        const auto result = render(fact.arguments);
        EXPECT_EQ(result.exitCode, fact.exitCode);
        EXPECT_EQ(result.err, "kvx: render: " + std::string(fact.message) + "\n");
        EXPECT_EQ(folder.count(), before);
    }
    // The advice works.
    rendered({"six.wav", "out.mp3", "--channel-map", "0,1", "--device-rate", "48000"});
    rendered({"many.wav", "out.flac", "--channel-map", "0,1,2,3,4,5,6,7"});
    rendered({"many.wav", "out.ogg", "--channel-map", "0", "--device-rate", "200000"});
    rendered({"odd.wav", "out.flac", "--device-rate", "70000"});
}

TEST_F(ResultFormats, PeakAboveFullScaleIsReportedWithTheOptionsThatAvoidIt)
{
    support::writeSound(scaled(support::makeSweep(44100, 2, 44100), 3), folder / "loud.wav");
    const std::string rendering = "Rendered out.wav: ";
    EXPECT_EQ(rendered({"loud.wav", "out.wav", "--bits", "16"}),
              rendering + "WAV, 16 bits, 44100 Hz, stereo, 0:01.0\n"
                          "  The peak is +3.5 dB, 1.500 times full scale, and clipped: `--volume 0.666` or "
                          "`--normalize` avoids this.\n");
    const Sound clipped = support::readSound(folder / "out.wav");
    EXPECT_EQ(*std::max_element(clipped.samples.begin(), clipped.samples.end()), 32767.0f / 32768);
    EXPECT_EQ(*std::min_element(clipped.samples.begin(), clipped.samples.end()), -1.0f);

    EXPECT_EQ(rendered({"loud.wav", "out.wav"}),
              rendering + "WAV, 32-bit float, 44100 Hz, stereo, 0:01.0\n"
                          "  The peak is +3.5 dB, 1.500 times full scale, which 32-bit float keeps and "
                          "players clip: `--volume 0.666` or `--normalize` avoids "
                          "this.\n");
    EXPECT_EQ(peakOf(support::readSound(folder / "out.wav")), 1.5f);
    EXPECT_NE(rendered({"loud.wav", "out.wav", "--volume", "0.8"}).find("`--volume 0.666`"),
              std::string::npos);
    EXPECT_EQ(rendered({"loud.wav", "out.wav", "--volume", "0.666"}),
              rendering + "WAV, 32-bit float, 44100 Hz, stereo, 0:01.0\n");
    EXPECT_EQ(rendered({"loud.wav", "out.wav", "--bits", "16", "--quiet"}), "");
    support::writeSound({44100, 1, {5000.0f, -1.0f}}, folder / "loud.wav");
    EXPECT_EQ(rendered({"loud.wav", "out.wav"}),
              rendering + "WAV, 32-bit float, 44100 Hz, mono, 0:00.0\n"
                          "  The peak is +74.0 dB, 5000.000 times full scale, which 32-bit float keeps and "
                          "players clip: `--volume 0.0002` or `--normalize` "
                          "avoids this.\n");
    EXPECT_NE(rendered({"loud.wav", "out.ogg"}).find("5000.000 times full scale, which players clip: `"),
              std::string::npos);
    support::writeSound({44100, 1, {INFINITY, -1.0f}}, folder / "loud.wav");
    for (const Arguments& more : {Arguments{}, Arguments{"--normalize"}})
        EXPECT_EQ(rendered(joined({"loud.wav", "out.wav"}, more)),
                  rendering + "WAV, 32-bit float, 44100 Hz, mono, 0:00.0\n"
                              "  The sound has infinite samples, which no gain avoids.\n");
}

TEST_F(ResultFormats, NormalizedResultsPeakAtFullScale)
{
    const Sound sweep = support::makeSweep(44100, 2, 44100);
    const struct {
        float volume;
        const char* name;
        Arguments more;
        float peak;
    } facts[] = {
        {0.25f, "out.wav", {}, 1},
        {3, "out.wav", {}, 1},
        {0.25f, "out.wav", {"--bits", "16", "--no-dither"}, 32767.0f / 32768},
        {3, "out.flac", {"--no-dither"}, 8388607.0f / 8388608},
        {3, "out.aiff", {"--start", "0.5", "--rate", "0.9"}, 1},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name + testing::PrintToString(fact.more));
        support::writeSound(scaled(sweep, fact.volume), folder / "sound.wav");
        const std::string printed = rendered(joined({"sound.wav", fact.name, "--normalize"}, fact.more));
        EXPECT_NE(printed.find("\n  Normalized by "), std::string::npos) << printed;
        EXPECT_NEAR(peakOf(support::readSound(folder / fact.name)), fact.peak, 1e-7);
    }
    EXPECT_EQ(rendered({"in.wav", "out.wav", "--normalize"}),
              "Rendered out.wav: WAV, 32-bit float, 44100 Hz, stereo, 0:01.0\n  Normalized by +6.0 dB (a "
              "factor of 2.000).\n");
    expectSamples(support::readSound(folder / "out.wav").samples, scaled(sweep, 2).samples);

    support::writeSound({44100, 2, std::vector<float>(2000)}, folder / "silence.wav");
    EXPECT_EQ(rendered({"silence.wav", "out.wav", "--normalize"}),
              "Rendered out.wav: WAV, 32-bit float, 44100 Hz, stereo, 0:00.0\n");
    EXPECT_EQ(peakOf(support::readSound(folder / "out.wav")), 0);
}

TEST_F(ResultFormats, KeepAnEarlierResultWhenStopped)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    for (const std::string name :
         {"out.wav", "out.flac", "out.ogg", "out.opus", "out.mp3", "out.caf", "out.aiff"})
        for (const Arguments& more : {Arguments{}, Arguments{"--normalize"}}) {
            SCOPED_TRACE(name + testing::PrintToString(more));
            std::ofstream(folder / name) << "earlier";
            support::Child child(kvxCommand(joined({"render", "long.wav", name, "--rate", "0.04"}, more)), {},
                                 folder.path());
            while (child.isRunning() && unfinishedFiles().empty()) std::this_thread::yield();
            child.send(SIGTERM);
            const auto result = child.wait();
            EXPECT_EQ(result.exitCode, 143) << result.err;
            EXPECT_EQ(result.out, "Stopped; nothing was written.\n");
            EXPECT_EQ(bytesOf(folder / name), "earlier");
            fs::remove(folder / name);
            EXPECT_EQ(folder.count(), 2u);
        }
}

TEST_F(ResultFormats, LeaveNoFileOnAFullDisk)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 2), folder / "in.wav");
    const std::string formatNames[] = {"wav", "aiff", "caf", "flac", "ogg", "opus", "mp3"};
    for (const std::string& name : formatNames) {
        SCOPED_TRACE(name);
        const auto result = shell("ulimit -f 8; $kvx render in.wav out." + name);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err,
                  "kvx: render: out." + name +
                      " cannot be written: File too large; write to a disk that takes larger files, or "
                      "raise the limit with `ulimit -f unlimited`\n");
        EXPECT_EQ(folder.count(), 1u);
    }
    const auto result = shell("ulimit -f 8; TMPDIR=. $kvx render in.wav out.mp3 --normalize");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              "kvx: render: the sound to normalize cannot be copied to .: File too large; let TMPDIR "
              "name a folder with enough free space\n");
    EXPECT_EQ(folder.count(), 1u);
}

TEST_F(ResultFormats, ReplaceTheFileThatALinkNames)
{
    fs::create_directory(folder / "music");
    fs::create_symlink("music/real.flac", folder / "out.flac");
    std::ofstream(folder / "music/real.flac") << "earlier";
    fs::permissions(folder / "music/real.flac", fs::perms{0604});
    rendered({"in.wav", "out.flac"});
    EXPECT_TRUE(fs::is_symlink(folder / "out.flac"));
    EXPECT_EQ(infoOf(folder / "music/real.flac").frames, 44100);
    EXPECT_EQ(fs::status(folder / "music/real.flac").permissions(), fs::perms{0604});
}

TEST_F(ResultFormats, AKilledCommandLeavesAFileThatTheNextOneRemoves)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    const Arguments commands[] = {{"render", "long.wav", "out.wav", "--rate", "0.04"},
                                  {"play", "long.wav", "--capture", "out.wav"}};
    for (const Arguments& command : commands) {
        SCOPED_TRACE(command.front());
        support::Child killed(kvxCommand(command), {}, folder.path());
        while (killed.isRunning() && unfinishedFiles().empty()) std::this_thread::yield();
        killed.send(SIGKILL);
        killed.wait();
        ASSERT_EQ(unfinishedFiles().size(), 1u);
        EXPECT_EQ(unfinishedFiles().front().filename(), "out.wav." + std::to_string(killed.id()) + ".part");
        rendered({"in.wav", "out.wav"});
        EXPECT_EQ(folder.count(), 3u);
    }
}

TEST_F(ResultFormats, AreReadByOtherTools)
{
    const struct {
        const char *tool, *command, *output;
    } facts[] = {
        {"soxi", "soxi -e out.wav 2>&1; soxi -r out.wav; soxi -c out.wav; soxi -s out.wav",
         "Floating Point PCM\n44100\n2\n44100\n"},
        {"soxi", "soxi -b 16.wav 2>&1; soxi -s 16.wav; soxi -b 24.wav 2>&1; soxi -s 24.wav",
         "16\n44100\n24\n44100\n"},
        {"soxi", "soxi -b out.flac 2>&1; soxi -s out.flac; soxi -s out.ogg", "24\n44100\n44100\n"},
        {"soxi", "soxi -b out.aiff 2>&1; soxi -s out.aiff", "32\n44100\n"},
        {"flac", "flac --totally-silent --test --warnings-as-errors out.flac && echo good", "good\n"},
        {"ffprobe",
         "for f in out.wav 16.wav 24.wav out.flac out.ogg out.opus out.mp3 out.aiff out.caf; do ffprobe -v "
         "error "
         "-show_entries stream=codec_name,sample_rate,channels -of csv=p=0 $f; done 2>&1",
         "pcm_f32le,44100,2\npcm_s16le,44100,2\npcm_s24le,44100,2\nflac,44100,2\nvorbis,44100,2\nopus,48000,"
         "2\n"
         "mp3,44100,2\npcm_f32be,44100,2\npcm_f32be,44100,2\n"},
        {"ffprobe",
         "for f in six.wav six.flac six.ogg six.opus; do ffprobe -v error -show_entries "
         "stream=channels,channel_layout -of csv=p=0 $f; done 2>&1",
         "6,5.1\n6,5.1(side)\n6,5.1\n6,5.1\n"},
    };
    for (const char* name : {"out.wav", "out.flac", "out.ogg", "out.opus", "out.mp3", "out.aiff", "out.caf"})
        rendered({"in.wav", name});
    rendered({"in.wav", "16.wav", "--bits", "16"});
    rendered({"in.wav", "24.wav", "--bits", "24"});
    support::writeSound(support::makeNoise(48000, 6, 4800), folder / "sound.wav");
    for (const char* name : {"six.wav", "six.flac", "six.ogg", "six.opus"}) rendered({"sound.wav", name});
    std::string missing;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.command);
        if (shell("command -v " + std::string(fact.tool)).exitCode != 0) {
            missing += std::string(" ") + fact.tool;
            continue;
        }
        EXPECT_EQ(shell(fact.command).out, fact.output);
    }
    if (!missing.empty()) GTEST_SKIP() << "not installed:" << missing;
}

} // namespace
