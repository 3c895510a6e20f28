// `kvx play` through the file player: captured sound and messages.
#include "tests/endtoend/command/play_fixture.h"
#include "tests/endtoend/command/pty_child.h"
#include "tests/endtoend/expected_samples.h"

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>

namespace {

using namespace endtoend;
using support::Sound;

/// Return the output of a device with `channels` channels that plays the sound. A mono sound plays on all
/// channels.
std::vector<float> inChannels(const Sound& sound, int channels)
{
    std::vector<float> samples;
    for (std::size_t frame = 0; frame < sound.frames(); ++frame)
        for (int channel = 0; channel < channels; ++channel)
            samples.push_back(sound.samples[frame * std::size_t(sound.channels) +
                                            std::size_t(std::min(channel, sound.channels - 1))]);
    return samples;
}

/// Write a valid sound file with more frames than the library loads. The file is sparse, so it needs no disk
/// space.
void writeTooLong(const std::string& path)
{
    constexpr std::uint32_t header = 44, frames = 1500u << 20;
    support::writeSound({44100, 1, {0.5f}}, path, SF_FORMAT_WAV | SF_FORMAT_PCM_U8);
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    const auto put = [&file](std::uint32_t value, std::streamoff place) {
        file.seekp(place);
        file.write(reinterpret_cast<const char*>(&value), sizeof value);
    };
    put(frames + header - 8, 4);
    put(frames, 40);
    file.close();
    std::filesystem::resize_file(path, std::uintmax_t{frames} + header);
}

TEST_F(Play, AtTheDeviceRateEqualsTheFile)
{
    const struct {
        int channels;
        std::size_t frames;
        Arguments more;
        const char* why;
    } facts[] = {
        {2, 44100 * 2 + 17, {"--fast"}, "stereo"},
        {1, 44100 + 1, {"--fast"}, "mono on both channels"},
        {2, 1, {"--fast"}, "one frame"},
        {2, 44100, {"--fast", "--background"}, "loaded in the background"},
        {2, 44100, {}, "in real time"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Sound sound = support::makeNoise(44100, fact.channels, fact.frames);
        const Arguments arguments = {write(sound), "--device", "simulated", "--capture", "out.wav"};
        const auto result = play(joined(arguments, fact.more));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        expectThenSilence(support::readSound(folder / "out.wav").samples, inChannels(sound, 2));
    }
}

TEST_F(Play, PlaysSeveralFilesInOrder)
{
    write(support::makeNoise(44100, 2, 4410), "1.wav");
    write(support::makeNoise(22050, 1, 2205), "2.wav");
    const auto result = play({"--fast", "1.wav", "2.wav"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(
        result.out.find("Playing 1.wav: 44100 Hz, stereo, 0:00.1\nPlaying 2.wav: 22050 Hz, mono, 0:00.1\n"),
        std::string::npos)
        << result.out;
}

TEST_F(Play, PlaysFoldersAndPlaylists)
{
    std::filesystem::create_directories(folder / "album/cd 1");
    for (const char* name : {"album/2.wav", "album/10.wav", "album/cd 1/1.wav"})
        write(support::makeNoise(44100, 2, 8820), name);
    std::ofstream(folder / "album/list.m3u") << "10.wav\r\n2.wav\r\n";
    const struct {
        Arguments arguments;
        Arguments played;
    } facts[] = {
        {{"album"}, {"2.wav", "10.wav"}},
        {{"album", "-r"}, {"2.wav", "10.wav", "1.wav"}},
        {{"album/list.m3u", "album/cd 1"}, {"10.wav", "2.wav", "1.wav"}},
    };
    for (const auto& fact : facts)
        for (const Arguments& more : {Arguments{"--fast"}, {"--fast", "--buffered"}}) {
            SCOPED_TRACE(testing::PrintToString(fact.arguments));
            const auto result = play(joined(fact.arguments, more));
            EXPECT_EQ(result.exitCode, 0) << result.err;
            std::string expected;
            for (const std::string& name : fact.played)
                expected += "Playing " + name + ": 44100 Hz, stereo, 0:00.2\n";
            EXPECT_NE(result.out.find(expected + "Done."), std::string::npos) << result.out;
        }
}

// No file of the playlist ends at the end of a slice, and the second file is shorter than a slice.
TEST_F(Play, PlaysSeveralFilesWithoutGaps)
{
    const Sound sounds[] = {support::makeNoise(44100, 2, 20011, 1), support::makeNoise(44100, 2, 101, 2),
                            support::makeNoise(44100, 2, 9973, 3)};
    std::vector<float> expected;
    for (const Sound& sound : sounds)
        expected.insert(expected.end(), sound.samples.begin(), sound.samples.end());
    write(sounds[0], "1.wav");
    write(sounds[1], "2.wav");
    write(sounds[2], "3.wav");
    for (const Arguments& more : {Arguments{}, {"--background"}, {"--host-version", "2010.5"}}) {
        SCOPED_TRACE(testing::PrintToString(more));
        const Arguments arguments = {"--fast", "--device", "simulated", "1.wav",
                                     "2.wav",  "3.wav",    "--capture", "out.wav"};
        const auto result = play(joined(arguments, more));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        expectThenSilence(support::readSound(folder / "out.wav").samples, expected);
    }
}

TEST_F(Play, StatesAnOutputAboveFullScale)
{
    Sound sound = support::makeNoise(44100, 2, 4410);
    sound.samples[100] = 0.99f;
    for (float& sample : sound.samples) sample = std::clamp(sample, -0.99f, 0.99f);
    write(sound, "near.wav");
    sound.samples[100] = 1.25f;
    write(sound, "above.wav");
    const struct {
        Arguments arguments;
        const char* note;
    } facts[] = {
        {{"near.wav"}, ""},
        {{"above.wav"}, "The output was up to +1.9 dB above full scale; `--volume 0.8` avoids clipping.\n"},
        {{"above.wav", "--volume", "0.875"},
         "The output was up to +0.8 dB above full scale; `--volume 0.8` avoids clipping.\n"},
        {{"above.wav", "--volume", "0.8"}, ""},
        {{"above.wav", "--buffered"},
         "The output was up to +1.9 dB above full scale; `--gain -2.0` avoids clipping.\n"},
        {{"above.wav", "--buffered", "--gain", "-2"}, ""},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        const auto result = play(joined({"--fast", "--device", "simulated"}, fact.arguments));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.out.find("The output") == std::string::npos, *fact.note == 0) << result.out;
        EXPECT_NE(result.out.find(std::string(fact.note) + "Done.\n"), std::string::npos) << result.out;
    }
}

// The second file is shorter than the limit.
TEST_F(Play, WithDurationPlaysTheStartOfEachFile)
{
    const Sound one = support::makeNoise(44100, 2, 20011, 1), two = support::makeNoise(44100, 2, 3001, 2);
    write(one, "1.wav");
    write(two, "2.wav");
    std::vector<float> expected(one.samples.begin(), one.samples.begin() + 4410 * 2);
    expected.insert(expected.end(), two.samples.begin(), two.samples.end());
    expected.insert(expected.end(), one.samples.begin(), one.samples.begin() + 4410 * 2);
    for (const Arguments& more : {Arguments{}, {"--buffered"}}) {
        SCOPED_TRACE(testing::PrintToString(more));
        const Arguments arguments = {"--fast", "--device",   "simulated", "1.wav",     "2.wav",
                                     "1.wav",  "--duration", "0:00.1",    "--capture", "out.wav"};
        const auto result = play(joined(arguments, more));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        expectAfterSilence(support::readSound(folder / "out.wav"), expected);
    }
}

TEST_F(Play, PlaysSeveralFilesAtAnotherRateWithGapsOfAtMostASlice)
{
    write(support::makeNoise(44100, 2, 30011, 1), "1.wav");
    write(support::makeNoise(44100, 2, 20011, 2), "2.wav");
    for (const char* unit : {"time-pitch", "varispeed"}) {
        SCOPED_TRACE(unit);
        ASSERT_EQ(play({"--fast", "--device", "simulated", "--rate", "1.25", "--unit", unit, "1.wav", "2.wav",
                        "--capture", "out.wav"})
                      .exitCode,
                  0);
        const Sound captured = support::readSound(folder / "out.wav");
        const auto both = std::size_t((30011 + 20011) / 1.25);
        ASSERT_GE(captured.frames(), both);
        std::size_t silent = 0, longest = 0;
        for (std::size_t frame = support::leadingSilence(captured); frame < both; ++frame) {
            silent = std::fabs(captured.samples[frame * 2]) < 1e-3f ? silent + 1 : 0;
            longest = std::max(longest, silent);
        }
        EXPECT_LE(longest, 512u);
    }
}

// With an option that only the file player has, a file that is too long for the memory fails to load.
TEST_F(Play, LeavesOutAFileThatFailsToLoad)
{
    const Sound one = support::makeNoise(44100, 2, 44100 + 17, 1),
                two = support::makeNoise(44100, 2, 9000, 2);
    write(one, "1.wav");
    write(two, "2.wav");
    writeTooLong(folder / "long.wav");
    std::vector<float> expected = one.samples;
    expected.insert(expected.end(), two.samples.begin(), two.samples.end());
    for (const Arguments& files : {Arguments{"1.wav", "long.wav", "2.wav"}, {"long.wav", "1.wav", "2.wav"}}) {
        SCOPED_TRACE(testing::PrintToString(files));
        const auto result =
            play(joined({"--fast", "--device", "simulated", "--pan", "0", "--capture", "out.wav"}, files));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err,
                  "kvx: play: long.wav is too long for the memory; `kvx play --buffered` plays files "
                  "from the disk\n");
        EXPECT_NE(result.out.find("Done; 1 of 3 files could not be played.\n"), std::string::npos)
            << result.out;
        expectThenSilence(support::readSound(folder / "out.wav").samples, expected);
    }
    const auto result = play({"--fast", "--pan", "0", "long.wav"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out.find("Done."), std::string::npos) << result.out;
    expectMessage(result, "play");
}

TEST_F(Play, PlaysAFileThatIsTooLongForTheMemoryFromTheDisk)
{
    const Sound one = support::makeNoise(44100, 2, 5000, 1), two = support::makeNoise(44100, 2, 9000, 2);
    write(one, "1.wav");
    write(two, "2.wav");
    writeTooLong(folder / "long.wav");
    PtyChild child(
        kvxCommand({"play", "--device", "simulated", "--volume", "0.5", "1.wav", "long.wav", "2.wav"}), 200,
        folder.path());
    EXPECT_TRUE(child.waitFor("Playing 1.wav")) << child.shown();
    EXPECT_TRUE(
        child.waitFor("long.wav needs 11.7 GiB, too much for the memory, so it plays from the disk, without "
                      "rate, pitch and loops."))
        << child.shown();
    EXPECT_TRUE(child.waitFor("Playing long.wav")) << child.shown();
    EXPECT_TRUE(child.waitFor(" / 9:54:25.8")) << child.shown();
    EXPECT_TRUE(child.waitFor("  volume 50 %")) << child.shown();
    child.type("\x1b[A");
    EXPECT_TRUE(child.waitFor("  volume 55 %")) << child.shown();
    child.type("n");
    EXPECT_TRUE(child.waitFor("Playing 2.wav")) << child.shown();
    EXPECT_TRUE(child.waitFor("  volume 55 %")) << child.shown();
    EXPECT_TRUE(child.waitFor("Done.")) << child.shown();
    EXPECT_EQ(child.wait(), 0) << child.shown();

    PtyChild late(kvxCommand({"play", "--device", "simulated", "--start", "1:00:00", "long.wav"}), 200,
                  folder.path());
    EXPECT_TRUE(late.waitFor("  1:00:00.")) << late.shown();
    late.type("q");
    EXPECT_EQ(late.wait(), 0);
}

TEST_F(Play, InfoPrintsTheFormatsOfTheClass)
{
    write(support::makeNoise(48000, 6, 48000 * 3 / 2), "six.wav");
    const auto result = play({"--info", "six.wav"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "six.wav\n"
                          "  container     WAV (Microsoft)\n"
                          "  codec         32 bit float\n"
                          "  bit depth     32\n"
                          "  sample rate   48000 Hz\n"
                          "  channels      6\n"
                          "  duration      0:01.5 (1.500 s)\n"
                          "  client format  6 ch,  48000 Hz, 'lpcm' (0x00000009) 32-bit little-endian float\n"
                          "  output format  6 ch,  48000 Hz, 'lpcm' (0x00000029) 32-bit little-endian float, "
                          "deinterleaved\n");
}

TEST_F(Play, InfoPrintsJson)
{
    write(support::makeNoise(48000, 6, 48000 * 3 / 2), "six.wav");
    write(support::makeNoise(44100, 65, 441), "many.wav");
    const auto result = play({"--info", "--json", "six.wav", "many.wav"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const auto json = nlohmann::json::parse(result.out);
    ASSERT_EQ(json.size(), 2u);
    EXPECT_EQ(
        json[0],
        nlohmann::json({{"path", "six.wav"},
                        {"container", "WAV (Microsoft)"},
                        {"codec", "32 bit float"},
                        {"bitDepth", 32},
                        {"sampleRate", 48000.0},
                        {"channels", 6},
                        {"playedChannels", 6},
                        {"frames", 72000},
                        {"duration", 1.5},
                        {"clientFormat", " 6 ch,  48000 Hz, 'lpcm' (0x00000009) 32-bit little-endian float"},
                        {"outputFormat", " 6 ch,  48000 Hz, 'lpcm' (0x00000029) 32-bit little-endian float, "
                                         "deinterleaved"},
                        {"tags", nlohmann::json::object()}}));
    EXPECT_EQ(json[1]["channels"], 65);
    EXPECT_EQ(json[1]["playedChannels"], 64);
    const auto refused = play({"--json", "six.wav"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.err, "kvx: play: --json requires --info; --help lists the arguments\n");
}

TEST_F(Play, InfoPrintsTheTags)
{
    SF_INFO info = {};
    info.samplerate = 44100;
    info.channels = 1;
    info.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    SNDFILE* const file = sf_open((folder / "song.flac").c_str(), SFM_WRITE, &info);
    sf_set_string(file, SF_STR_TITLE, "A \x1b[1mSong");
    sf_set_string(file, SF_STR_TRACKNUMBER, "7");
    const std::vector<float> samples(441);
    sf_writef_float(file, samples.data(), 441);
    sf_close(file);
    const auto result = play({"--info", "song.flac"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    for (const char* line :
         {"  container     FLAC (Free Lossless Audio Codec)\n", "  codec         Signed 16 bit PCM\n",
          "  title         A ?[1mSong\n", "  track number  7\n"})
        EXPECT_NE(result.out.find(line), std::string::npos) << line << result.out;
    const auto json = nlohmann::json::parse(play({"--info", "--json", "song.flac"}).out);
    EXPECT_EQ(json[0]["tags"]["title"], "A \x1b[1mSong");
}

TEST_F(Play, InfoPrintsTheChannelsThatDoNotPlay)
{
    const struct {
        int channels;
        const char* shown;
    } facts[] = {{64, "  channels      64\n"}, {65, "  channels      65, of which the first 64 play\n"}};
    for (const auto& fact : facts) {
        write(support::makeNoise(44100, fact.channels, 441), "many.wav");
        const auto result = play({"--info", "many.wav"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_NE(result.out.find(fact.shown), std::string::npos) << result.out;
        EXPECT_NE(result.out.find("client format 64 ch, "), std::string::npos) << result.out;
    }
}

TEST_F(Play, AdvisesACommandThatPlaysTheDroppedChannels)
{
    const Sound six = support::makeNoise(44100, 6, 4410);
    write(six, "six.wav");
    for (const Arguments& more : {Arguments{}, {"--buffered"}}) {
        SCOPED_TRACE(testing::PrintToString(more));
        const auto result = play(joined({"--fast", "--device", "simulated", "six.wav"}, more));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        const std::string advice = "drops channels 2 to 5. To hear channels 2 and 3: `kvx ";
        const auto at = result.out.find(advice);
        ASSERT_NE(at, std::string::npos) << result.out;
        const auto begin = at + advice.size(), end = result.out.find('`', begin);

        const std::string command = kvxPath + (" " + result.out.substr(begin, end - begin)) +
                                    " --fast --device simulated --capture out.wav";
        const auto advised = support::runChild({"sh", "-c", command}, {}, folder.path());
        EXPECT_EQ(advised.exitCode, 0) << advised.err;
        EXPECT_EQ(advised.out.find("drops"), std::string::npos) << advised.out;
        std::vector<float> expected;
        for (std::size_t frame = 0; frame < six.frames(); ++frame)
            expected.insert(expected.end(), {six.samples[frame * 6 + 2], six.samples[frame * 6 + 3]});
        expectThenSilence(support::readSound(folder / "out.wav").samples, expected);
    }
}

TEST_F(Play, FindsFileNamesInTheOtherNormalForm)
{
    const std::string composed = "\xc3\xa9.wav", decomposed = "e\xcc\x81.wav";
    for (const auto& [onDisk, requested] :
         {std::pair(composed, decomposed), std::pair(decomposed, composed)}) {
        SCOPED_TRACE(onDisk);
        write(support::makeNoise(44100, 2, 441), onDisk);
        for (const Arguments& more : {Arguments{"--fast"}, {"--fast", "--buffered"}, {"--info"}}) {
            const auto result = play(joined({requested}, more));
            EXPECT_EQ(result.exitCode, 0) << result.err;
            EXPECT_NE(result.out.find(onDisk), std::string::npos) << result.out;
        }
        const auto result = play({"--fast", requested, "--capture", onDisk});
        EXPECT_EQ(result.exitCode, 1) << "input and capture are one file";
        std::filesystem::remove(folder / onDisk);
    }
}

TEST_F(Play, PrintsWhyKeysDoNotWork)
{
    write(support::makeNoise(44100, 2, 441));
    const auto result = play({"in.wav"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("No keys: the standard "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("put is not a terminal. Ctrl-C ends.\n"), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find('\x1b'), std::string::npos) << "no progress line";
    EXPECT_EQ(play({"--quiet", "in.wav"}).out, "");
    EXPECT_EQ(play({"--fast", "in.wav"}).out.find("No keys"), std::string::npos) << "no time for keys";
}

TEST_F(Play, RefusesOptionsOfTheOtherPlayMethodAndOutOfRange)
{
    write(support::makeNoise(44100, 2, 441));
    const struct {
        Arguments arguments;
        const char* message;
    } facts[] = {
        {{"in.wav", "--gain", "-6"}, "--buffered"},
        {{"in.wav", "--buffered", "--rate", "2"}, "--buffered"},
        {{"in.wav", "--buffered", "--background"}, "--buffered"},
        {{"in.wav", "--volume", "1.5"}, "from 0 to 1"},
        {{"in.wav", "--rate", "0"}, "from 0.04 to 32"},
        {{"in.wav", "--unit", "varispeed", "--rate", "5"}, "from 0.25 to 4"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        const auto result = play(fact.arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        expectMessage(result, "play");
        EXPECT_NE(result.err.find(fact.message), std::string::npos) << result.err;
    }
    EXPECT_EQ(play({"in.wav", "--fast", "--start", "1"}).exitCode, 1);
}

} // namespace
