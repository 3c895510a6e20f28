// Truncated or damaged sound files: every command plays the frames that can be decoded, warns once, and exits
// with 1.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/expected_samples.h"

#include <sndfile.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

using namespace endtoend;
using support::Sound;
namespace fs = std::filesystem;

struct TruncatedFiles : KvxTest {
    using KvxTest::run;

    void truncate(const std::string& name, std::uintmax_t bytes)
    {
        fs::resize_file(folder / name, fs::file_size(folder / name) - bytes);
    }
    void write(const Sound& sound, const std::string& name, int format)
    {
        support::writeSound(sound, folder / name, format);
    }

    support::ChildResult run(const Arguments& command, const std::string& file) const
    {
        return run(
            joined(command, command.front() == "render" ? Arguments{file, "out.wav"} : Arguments{file}));
    }
};

const Arguments commands[] = {
    {"play", "--fast", "--quiet", "--capture", "out.wav"},
    {"play", "--fast", "--quiet", "--buffered", "--capture", "out.wav"},
    {"play", "--quiet", "--info"},
    {"render", "--quiet"},
    {"soundstream", "--fast", "--quiet", "--capture", "out.wav"},
};

TEST_F(TruncatedFiles, PlayThePresentFramesAndWarnOnce)
{
    const Sound sound = support::makeSweep(44100, 2, 44100);
    const struct {
        const char* name;
        int format;
        std::uintmax_t bytes; ///< to remove
        std::size_t frames;   ///< that remain
    } facts[] = {
        {"cut.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 4 * 10000, 34100},
        {"cut.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 4 * 10000, 34100},
        {"cut.caf", SF_FORMAT_CAF | SF_FORMAT_PCM_16, 4 * 10000, 34100},
        {"cut.w64", SF_FORMAT_W64 | SF_FORMAT_PCM_16, 4, 44099},
        {"cut.au", SF_FORMAT_AU | SF_FORMAT_PCM_16, 1, 44099},
    };
    for (const auto& fact : facts) {
        write(sound, fact.name, fact.format);
        Sound left = support::readSound(folder / fact.name);
        truncate(fact.name, fact.bytes);
        left.samples.resize(fact.frames * 2);
        const std::string warning = std::string(fact.name) + " is cut short: it holds " +
                                    std::to_string(fact.frames) +
                                    " of the 44100 frames that its header states; get the file again\n";
        for (const auto& command : commands) {
            SCOPED_TRACE(testing::PrintToString(command) + " " + fact.name);
            const auto result = run(command, fact.name);
            EXPECT_EQ(result.exitCode, 1);
            EXPECT_EQ(result.err, "kvx: " + command.front() + ": " + warning);
            if (command.back() == "--info") {
                EXPECT_NE(result.out.find(fact.frames == 34100 ? "(0.773 s)" : "(1.000 s)"), result.out.npos)
                    << result.out;
                continue;
            }
            expectThenSilence(support::readSound(folder / "out.wav").samples, left.samples);
            fs::remove(folder / "out.wav");
        }
    }
}

TEST_F(TruncatedFiles, OfCompressedSoundPlayTheDecodedFrames)
{
    const Sound sound = support::makeSweep(44100, 2, 44100);
    write(sound, "cut.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    Sound whole = support::readSound(folder / "cut.flac");
    truncate("cut.flac", fs::file_size(folder / "cut.flac") / 3);
    for (const auto& command : commands) {
        if (command.back() == "--info") continue;
        SCOPED_TRACE(testing::PrintToString(command));
        const auto result = run(command, "cut.flac");
        EXPECT_EQ(result.exitCode, 1);
        expectMessage(result, command.front());
        EXPECT_NE(result.err.find(" of the 44100 frames that its header states"), result.err.npos)
            << result.err;
        const std::size_t from = result.err.find("it holds ") + 9;
        Sound left = whole;
        left.samples.resize(std::stoul(result.err.substr(from)) * 2);
        EXPECT_GT(left.frames(), 20000u);
        expectThenSilence(support::readSound(folder / "out.wav").samples, left.samples);
        fs::remove(folder / "out.wav");
    }
}

/// Return the frames of a file up to the damage, where the decoder stops.
Sound decodedPart(const std::string& path)
{
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    Sound sound{info.samplerate, info.channels, {}};
    sound.samples.resize(std::size_t(info.frames * info.channels));
    const sf_count_t got = sf_readf_float(file, sound.samples.data(), info.frames);
    sf_close(file);
    sound.samples.resize(std::size_t(got * info.channels));
    return sound;
}

// The damaged file has its full length, so only decoding finds the damage.
TEST_F(TruncatedFiles, DamagedInTheMiddlePlayTheDecodedFrames)
{
    write(support::makeNoise(44100, 2, 44100), "bad.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    const auto size = std::streamoff(fs::file_size(folder / "bad.flac"));
    std::fstream file(folder / "bad.flac", std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(size / 2);
    file << std::string(20000, '\0');
    file.close();
    const Sound start = decodedPart(folder / "bad.flac");
    ASSERT_GT(start.frames(), 10000u);
    ASSERT_LT(start.frames(), 30000u);
    for (const auto& command : commands) {
        SCOPED_TRACE(testing::PrintToString(command));
        const auto result = run(command, "bad.flac");
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err,
                  "kvx: " + command.front() +
                      ": bad.flac is damaged: not all of its frames decode; get the file again\n");
        if (command.back() == "--info") {
            char seconds[16];
            std::snprintf(seconds, sizeof seconds, "(%.3f s)", double(start.frames()) / 44100);
            EXPECT_NE(result.out.find(seconds), result.out.npos) << result.out;
            continue;
        }
        const Sound played = support::readSound(folder / "out.wav");
        expectThenSilence(played.samples, start.samples);
        if (command.front() == "render") EXPECT_EQ(played.frames(), start.frames());
        fs::remove(folder / "out.wav");
    }
}

TEST_F(TruncatedFiles, WithoutAStatedLengthPlayWithoutAWarning)
{
    const Sound sound = support::makeSweep(44100, 2, 44100);
    write(sound, "streamed.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::fstream file(folder / "streamed.wav", std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(40); // offset of the field with the length of the data chunk
    file.write("\xff\xff\xff\xff", 4);
    file.close();
    truncate("streamed.wav", 4 * 10000);
    for (const auto& command : commands) {
        SCOPED_TRACE(testing::PrintToString(command));
        const auto result = run(command, "streamed.wav");
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(TruncatedFiles, OfChainedStreamsWarnOfSkippedStreams)
{
    write(support::makeSweep(44100, 2, 22050), "a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    write(support::makeSweep(44100, 1, 22050), "b.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    std::ofstream joined(folder / "joined.ogg", std::ios::binary);
    for (const char* part : {"a.ogg", "b.ogg"})
        joined << std::ifstream(folder / part, std::ios::binary).rdbuf();
    joined.close();
    for (const auto& command : commands) {
        SCOPED_TRACE(testing::PrintToString(command));
        const auto result = run(command, "joined.ogg");
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err,
                  "kvx: " + command.front() +
                      ": joined.ogg plays in part: 1 of its chained streams cannot be decoded or has another "
                      "sample rate or number of channels; split it into files\n");
    }
}

TEST_F(TruncatedFiles, InAPlaylistLetTheOtherFilesPlay)
{
    const Sound sound = support::makeNoise(44100, 2, 4410);
    for (const char* name : {"a.wav", "cut.wav", "b.wav"})
        write(sound, name, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    truncate("cut.wav", 8 * 410);
    const auto result =
        run({"play", "--fast", "--buffered", "a.wav", "cut.wav", "b.wav", "--capture", "out.wav"});
    EXPECT_EQ(result.exitCode, 1);
    expectMessage(result, "play");
    EXPECT_NE(result.out.find("Playing b.wav"), result.out.npos) << result.out;
    Sound all = sound;
    all.samples.insert(all.samples.end(), sound.samples.begin(), sound.samples.begin() + 4000 * 2);
    all.samples.insert(all.samples.end(), sound.samples.begin(), sound.samples.end());
    expectThenSilence(support::readSound(folder / "out.wav").samples, all.samples);
}

} // namespace
