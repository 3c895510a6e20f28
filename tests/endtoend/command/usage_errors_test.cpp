// Wrong files, options and commands: kvx prints one line that names the problem and the next step, exits with
// 1 (2 for a wrong command line), and leaves no unfinished file.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/support/sound_samples.h"

#include <sndfile.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/stat.h>

namespace {

using namespace endtoend;
namespace fs = std::filesystem;

struct UsageErrors : KvxTest {
    UsageErrors()
    {
        const auto sound = support::makeSweep(44100, 2, 44100);
        support::writeSound(sound, folder / "good.wav");
        support::writeSound({44100, 2, {}}, folder / "silent.wav");
        copyBytes("good.wav", "header.wav", 30);
        std::ofstream(folder / "text.txt") << "Dear reader,\nthis is a letter.\n";
        std::ofstream(folder / "text.wav") << "Dear reader,\nthis is not a sound.\n";
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
        std::ofstream(folder / to, std::ios::binary) << bytesOf(folder / from).substr(0, count);
    }
    /// Write a file of random bytes.
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

TEST_F(UsageErrors, OfPlayPrintOneLineWithAdvice)
{
    const struct {
        Arguments arguments;
        const char* names;  ///< the part of the message that names the problem
        const char* advice; ///< the part of the message that names the next step
    } facts[] = {
        {{"missing.wav"}, "missing.wav", "check the name"},
        {{"folder"}, "folder has no sound files", "name another folder, or also search its folders with -r"},
        {{"-r", "folder"}, "folder has no sound files", "name another folder"},
        {{"missing.m3u"}, "missing.m3u does not exist", "check the name"},
        {{"text.txt"}, "text.txt", "kvx plays WAV"},
        {{"text.wav"}, "text.wav", "kvx plays WAV"},
        {{"empty.wav"}, "empty.wav", "get the file again"},
        {{"junk.mp3"}, "junk.mp3", "(it is not a sound file); kvx plays WAV"},
        {{"more.mp3"}, "more.mp3", "(it is not a sound file); kvx plays WAV"},
        {{"rate0.wav"}, "rate0.wav", "(it is damaged, or is not a sound file); kvx plays WAV"},
        {{"header.wav"}, "header.wav", "kvx plays WAV"},
        {{"silent.wav"}, "silent.wav", "choose another file"},
        {{"good.wav", "--device", "no such device"},
         "no such device",
         "; name one of these devices with --device\n"},
        {{"good.wav", "--device", "999"}, "999", "; name one of these devices with --device\n"},
        {{"good.wav", "three.wav", "--start", "0.5"}, "three.wav", "before 0:00.5"},
        {{"good.wav", "three.wav", "--loop", "0:0.6"}, "three.wav", "up to 0:00.5"},
        {{"/dev/null"}, "/dev/null", "copy it into a file first"},
        {{"good.wav", "--capture", "no/such/folder/out.wav"}, "no/such/folder/out.wav", "folder that exists"},
        {{"good.wav", "--capture", "folder"}, "folder", "name a file"},
        {{"good.wav", "--capture", "/proc/out.wav"}, "/proc/out.wav", "may write"},
        {{"good.wav", "--capture", "/dev/null"}, "/dev/null", "name a file"},
        {{"good.wav", "--capture", "pipe.wav"}, "pipe.wav", "name a file"},
        {{"good.wav", "--capture", "good.wav"}, "good.wav", "name another file"},
        {{"good.wav", "--library", "missing.so"}, "missing.so", ""},
        {{"good.wav", "--library", "text.txt"}, "text.txt", ""},
    };
    const std::size_t before = folder.count();
    for (const auto& fact : facts) {
        Arguments arguments = joined({"play", "--fast"}, fact.arguments);
        const auto has = [&](const char* option) {
            return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
        };
        if (!has("--capture")) arguments = joined(arguments, {"--capture", "out.wav"});
        SCOPED_TRACE(testing::PrintToString(arguments));

        const auto result = run(arguments);
        EXPECT_EQ(result.exitCode, 1) << result.err;
        expectMessage(result, "play");
        EXPECT_NE(result.err.find(fact.names), std::string::npos) << result.err;
        EXPECT_NE(result.err.find(fact.advice), std::string::npos) << result.err;
        EXPECT_FALSE(fs::exists(folder / "out.wav"));
        EXPECT_EQ(folder.count(), before) << "a new file was left";
    }
}

TEST_F(UsageErrors, OfAFileInAListLeaveItOut)
{
    std::ofstream(folder / "list.m3u") << "good.wav\nmissing.wav\nhttp://host/a.wav\nlist.m3u\ntext.wav\n";
    const struct {
        Arguments arguments;
        const char* messages;
    } facts[] = {
        {{"good.wav", "missing.wav"},
         "kvx: play: missing.wav does not exist; check the name and the folder\n"},
        {{"folder", "good.wav"},
         "kvx: play: folder has no sound files; name another folder, or also search its folders with -r\n"},
        {{"list.m3u"},
         "kvx: play: missing.wav does not exist; check the name and the folder\n"
         "kvx: play: http://host/a.wav is a URL; save it as a file, and name the file\n"
         "kvx: play: list.m3u is a playlist in a playlist; name it in the command, or list its files\n"
         "kvx: play: text.wav cannot be decoded (it is not a sound file); kvx plays WAV, AIFF, CAF, FLAC, "
         "Ogg "
         "Vorbis, Opus, MP3 and the other formats that libsndfile reads\n"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        for (const Arguments& more : {Arguments{"--fast"}, {"--fast", "--buffered"}, {"--info"}}) {
            const auto result = run(joined({"play", "--device", "simulated"}, joined(fact.arguments, more)));
            EXPECT_EQ(result.exitCode, 1);
            EXPECT_EQ(result.err, fact.messages);
            EXPECT_NE(result.out.find("good.wav"), std::string::npos) << result.out;
        }
    }
}

// If no file is left, the message about the last one ends the command.
TEST_F(UsageErrors, OfAllFilesEndTheCommand)
{
    const auto result = run({"play", "--fast", "missing.wav", "empty.wav", "--capture", "out.wav"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "kvx: play: missing.wav does not exist; check the name and the folder\n"
                          "kvx: play: empty.wav is empty; get the file again\n");
    EXPECT_EQ(result.out, "");
    EXPECT_FALSE(fs::exists(folder / "out.wav"));
}

// kvx checks the options against all files before it plays the first one.
TEST_F(UsageErrors, OfOptionsEndPlayBeforeTheFirstFile)
{
    const Arguments facts[] = {
        {"--start", "0.5"}, {"--loop", "0:0.6"}, {"--pan", "1", "--start", "2"}, {"--channel-map", "2"}};
    for (const auto& more : facts) {
        SCOPED_TRACE(testing::PrintToString(more));
        const auto result = run(joined({"play", "--fast", "good.wav", "three.wav"}, more));
        EXPECT_EQ(result.exitCode, 1);
        expectMessage(result, "play");
        EXPECT_EQ(result.out, "");
    }
}

TEST_F(UsageErrors, OfTheDeviceVariablePrintOneLineWithAdvice)
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
        if (fact.exitCode == 0) {
            EXPECT_EQ(result.err, "");
            continue;
        }
        expectMessage(result, "play");
        EXPECT_NE(result.err.find("nope"), std::string::npos) << result.err;
        EXPECT_NE(result.err.find("; name one of these devices with KVX_AUDIO_DEVICE or --device\n"),
                  std::string::npos)
            << result.err;
    }
}

TEST_F(UsageErrors, OfTuneKeepAnEarlierFile)
{
    copyBytes("good.wav", "kept.wav", 1000);
    const std::size_t before = folder.count();
    const auto result = support::runChild(
        {"sh", "-c", "ulimit -f 100; exec " + std::string(kvxPath) + " tune kept.wav"}, {}, folder.path());
    EXPECT_EQ(result.exitCode, 1);
    expectMessage(result, "tune");
    EXPECT_NE(result.err.find("File too large"), std::string::npos) << result.err;
    EXPECT_EQ(fs::file_size(folder / "kept.wav"), 1000u);
    EXPECT_EQ(folder.count(), before);
}

TEST_F(UsageErrors, KeepAnEarlierCapture)
{
    copyBytes("good.wav", "out.wav", 1000);
    const auto result = run({"play", "--fast", "--capture", "out.wav", "text.wav"});
    EXPECT_EQ(result.exitCode, 1);
    expectMessage(result, "play");
    EXPECT_EQ(fs::file_size(folder / "out.wav"), 1000u);
}

TEST_F(UsageErrors, OfTheCommandLineExitWith2)
{
    const Arguments facts[] = {
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
        const auto result = run(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        const bool isCommand = !arguments.empty() && arguments.front() != "sing";
        expectMessage(result, isCommand ? arguments.front() : "");
        EXPECT_NE(result.err.find("; --help lists the arguments\n"), std::string::npos) << result.err;
    }
}

TEST_F(UsageErrors, OfOtherCommandsPrintOneLine)
{
    const struct {
        Arguments arguments;
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
        expectMessage(result, fact.arguments.front());
        EXPECT_NE(result.err.find(fact.names), std::string::npos) << result.err;
    }
}

} // namespace
