// What a user can do wrong with `kvx`: one line on stderr that names the thing and says what to do, exit code
// 1 (or 2 for a wrong command line), nothing half-made left behind.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sys/stat.h>

namespace {

using namespace endtoend;
namespace fs = std::filesystem;

struct Refusals : testing::Test {
    support::TemporaryFolder folder;

    Refusals()
    {
        const auto sound = support::makeSweep(44100, 2, 44100);
        support::writeSound(sound, folder / "good.wav");
        support::writeSound({44100, 2, {}}, folder / "silent.wav");
        copyBytes("good.wav", "header.wav", 30);
        std::ofstream(folder / "text.txt") << "Dear reader,\nthis is a letter.\n";
        std::ofstream(folder / "text.wav") << "Dear reader,\nthis is no sound.\n";
        std::ofstream(folder / "empty.wav");
        writeJunk("junk.mp3", 3000);
        writeJunk("more.mp3", 30000);
        copyBytes("good.wav", "rate0.wav", fs::file_size(folder / "good.wav"));
        writeInto("rate0.wav", 24, std::string(4, '\0'));
        support::writeSound(support::makeNoise(44100, 3, 22050), folder / "three.wav");
        fs::create_directory(folder / "folder");
        EXPECT_EQ(mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
    }

    void copyBytes(const std::string& from, const std::string& to, std::size_t count)
    {
        std::ifstream in(folder / from, std::ios::binary);
        std::string bytes{std::istreambuf_iterator<char>(in), {}};
        std::ofstream(folder / to, std::ios::binary) << bytes.substr(0, count);
    }
    /// Of an MP3 it has the name alone.
    void writeJunk(const std::string& name, std::size_t count)
    {
        std::minstd_rand next(1);
        std::ofstream out(folder / name, std::ios::binary);
        for (std::size_t i = 0; i < count; ++i) out.put(char(next() >> 8));
    }
    void writeInto(const std::string& name, int offset, const std::string& bytes)
    {
        std::fstream file(folder / name, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(offset);
        file << bytes;
    }
};

TEST_F(Refusals, OfPlayingAreOneLineThatSaysWhatToDo)
{
    const struct {
        std::vector<std::string> arguments;
        const char* names;  // in the message
        const char* advice; // likewise
    } facts[] = {
        {{"missing.wav"}, "missing.wav", "check the name"},
        {{"folder"}, "folder", "name the sound files in it"},
        {{"text.txt"}, "text.txt", "kvx plays WAV"},
        {{"text.wav"}, "text.wav", "kvx plays WAV"},
        {{"empty.wav"}, "empty.wav", "get the file again"},
        {{"junk.mp3"}, "junk.mp3", "(it is no sound file); kvx plays WAV"},
        {{"more.mp3"}, "more.mp3", "(it is no sound file); kvx plays WAV"},
        {{"rate0.wav"}, "rate0.wav", "(it is damaged, or no sound file); kvx plays WAV"},
        {{"header.wav"}, "header.wav", "kvx plays WAV"},
        {{"silent.wav"}, "silent.wav", "choose another file"},
        {{"good.wav", "missing.wav"}, "missing.wav", "check the name"},
        {{"good.wav", "--device", "no such device"}, "no such device", "; name one of them with --device\n"},
        {{"good.wav", "--device", "999"}, "999", "; name one of them with --device\n"},
        {{"good.wav", "three.wav", "--start", "0.5"}, "three.wav", "before 0.500 seconds"},
        {{"good.wav", "three.wav", "--loop", "0:0.6"}, "three.wav", "up to 0.500 seconds"},
        {{"good.wav", "missing.wav", "--start", "5"}, "missing.wav", "check the name"},
        {{"pipe.wav"}, "pipe.wav", "copy it into a file first"},
        {{"/dev/null"}, "/dev/null", "copy it into a file first"},
        {{"good.wav", "--capture", "no/such/folder/out.wav"}, "no/such/folder/out.wav", "folder that exists"},
        {{"good.wav", "--capture", "folder"}, "folder", "name a file"},
        {{"good.wav", "--capture", "/proc/out.wav"}, "/proc/out.wav", "may write"},
        {{"good.wav", "--capture", "/dev/null"}, "/dev/null", "name a file"},
        {{"good.wav", "--capture", "good.wav"}, "good.wav", "name another file"},
        {{"good.wav", "--library", "missing.so"}, "missing.so", ""},
        {{"good.wav", "--library", "text.txt"}, "text.txt", ""},
    };
    const std::size_t before = folder.count();
    for (const auto& fact : facts) {
        // The capture must not be left half-made, whichever of the things went wrong.
        std::vector<std::string> arguments = {"play", "--fast"};
        arguments.insert(arguments.end(), fact.arguments.begin(), fact.arguments.end());
        const auto has = [&](const char* option) {
            return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
        };
        if (!has("--capture")) arguments.insert(arguments.end(), {"--capture", "out.wav"});
        SCOPED_TRACE(testing::PrintToString(arguments));

        const auto result = runKvx(arguments, folder.path());
        EXPECT_EQ(result.exitCode, 1) << result.err;
        EXPECT_EQ(lineCount(result.err), 1u) << result.err;
        EXPECT_EQ(result.err.rfind("kvx: ", 0), 0u) << result.err;
        EXPECT_NE(result.err.find(fact.names), std::string::npos) << result.err;
        EXPECT_NE(result.err.find(fact.advice), std::string::npos) << result.err;
        EXPECT_FALSE(fs::exists(folder / "out.wav"));
        EXPECT_EQ(folder.count(), before) << "something was left behind";
    }
}

// Options are held against all files before the first of them is heard.
TEST_F(Refusals, ComeBeforeTheFirstSound)
{
    const std::vector<std::string> facts[] = {
        {"--start", "0.5"}, {"--loop", "0:0.6"}, {"--pan", "1", "--start", "2"}, {"--channel-map", "2"}};
    for (const auto& more : facts) {
        SCOPED_TRACE(testing::PrintToString(more));
        std::vector<std::string> arguments = {"play", "--fast", "good.wav", "three.wav"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const auto result = runKvx(arguments, folder.path());
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(lineCount(result.err), 1u) << result.err;
        EXPECT_EQ(result.out, "");
    }
}

TEST_F(Refusals, OfADeviceThatTheEnvironmentNames)
{
    const struct {
        const char* device;
        int exitCode;
    } facts[] = {{"nope", 1}, {"", 0}, {"simulated", 0}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.device);
        const auto result = support::runChild(kvxCommand({"play", "--fast", "good.wav"}),
                                              {{"KVX_AUDIO_DEVICE", fact.device}}, folder.path());
        EXPECT_EQ(result.exitCode, fact.exitCode) << result.err;
        EXPECT_EQ(lineCount(result.err), std::size_t(fact.exitCode)) << result.err;
        if (fact.exitCode == 0) continue;
        EXPECT_NE(result.err.find("nope"), std::string::npos) << result.err;
        EXPECT_NE(result.err.find("; name one of them with KVX_AUDIO_DEVICE or --device\n"),
                  std::string::npos)
            << result.err;
    }
}

TEST_F(Refusals, OfATuneLeaveAUsersFileAlone)
{
    copyBytes("good.wav", "kept.wav", 1000);
    const std::size_t before = folder.count();
    const auto result = support::runChild(
        {"sh", "-c", "ulimit -f 100; exec " + std::string(kvxPath) + " tune kept.wav"}, {}, folder.path());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(lineCount(result.err), 1u) << result.err;
    EXPECT_NE(result.err.find("File too large"), std::string::npos) << result.err;
    EXPECT_EQ(fs::file_size(folder / "kept.wav"), 1000u);
    EXPECT_EQ(folder.count(), before);
}

TEST_F(Refusals, LeaveAnEarlierCaptureAlone)
{
    copyBytes("good.wav", "out.wav", 1000);
    const auto result = runKvx({"play", "--fast", "--capture", "out.wav", "text.wav"}, folder.path());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(fs::file_size(folder / "out.wav"), 1000u);
}

TEST_F(Refusals, OfTheCommandLineAreWrongUsage)
{
    const std::vector<std::string> facts[] = {
        {},
        {"sing"},
        {"play"},
        {"play", "good.wav", "--loud"},
        {"play", "good.wav", "--gain", "much"},
        {"play", "good.wav", "--gain", "41"},
        {"play", "good.wav", "--device-rate", "0"},
        {"play", "good.wav", "--device-rate", "-1"},
        {"play", "good.wav", "--device-rate", "nan"},
        {"play", "good.wav", "--host-version", "new"},
        {"play", "good.wav", "--host-version", "-1"},
        {"play", "good.wav", "--capture"},
        {"classes", "one", "two"},
        {"devices", "all"},
        {"tune"},
    };
    for (const auto& arguments : facts) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const auto result = runKvx(arguments, folder.path());
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find("--help"), std::string::npos) << result.err;
    }
}

TEST_F(Refusals, OfOtherCommandsAreOneLineToo)
{
    const struct {
        std::vector<std::string> arguments;
        const char* names;
    } facts[] = {
        {{"classes", "NoSuchClass"}, "NoSuchClass"},
        {{"classes", "Dictionary"}, "Dictionary"},
        {{"classes", "--library", "text.txt"}, "text.txt"},
        {{"tune", "no/such/folder/tune.wav"}, "no/such/folder/tune.wav"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        const auto result = runKvx(fact.arguments, folder.path());
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(lineCount(result.err), 1u) << result.err;
        EXPECT_NE(result.err.find(fact.names), std::string::npos) << result.err;
    }
}

} // namespace
