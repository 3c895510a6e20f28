// Standard input, standard output and pipes in place of files.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/command/pty_child.h"
#include "tests/endtoend/expected_samples.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace endtoend;
using support::Sound;
namespace fs = std::filesystem;

struct Streams : KvxTest {
    const Sound sound = support::makeNoise(44100, 2, 44100);
    const std::string temporary = folder / "temporary"; ///< the value of TMPDIR

    Streams()
    {
        support::writeSound(sound, folder / "in.wav");
        fs::create_directory(temporary);
        EXPECT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    }

    /// Run a shell script, in which $kvx is the command.
    support::ChildResult shell(const std::string& script) const
    {
        return support::runChild({"bash", "-c", script}, {{"kvx", kvxPath}, {"TMPDIR", temporary}},
                                 folder.path());
    }

    bool hasTemporaries() const { return !fs::is_empty(temporary); }

    /// Wait until the command handles the signal and then waits for something itself, or has ended.
    static void waitUntilAsleep(support::Child& child, int signal)
    {
        for (bool isReady = false; child.isRunning() && !isReady; std::this_thread::yield()) {
            const std::string status = bytesOf("/proc/" + std::to_string(child.id()) + "/status");
            const std::size_t handled = status.find("SigCgt:");
            isReady = handled != status.npos && status.find("State:\tS") != status.npos &&
                      (std::stoull(status.substr(handled + 7), nullptr, 16) >> (signal - 1) & 1) != 0;
        }
    }
};

// ---- standard input and pipes ----

TEST_F(Streams, AreReadInPlaceOfFiles)
{
    const std::string inputs[] = {
        "- < in.wav",
        "- < <(cat in.wav)",
        "<(cat in.wav)",
        "/dev/stdin < <(cat in.wav)",
        "pipe & cat in.wav > pipe; wait $!",
    };
    for (const std::string& input : inputs) {
        SCOPED_TRACE(input);
        const auto result = shell("$kvx play --fast --capture out.wav --quiet " + input);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        expectThenSilence(support::readSound(folder / "out.wav").samples, sound.samples);
        EXPECT_FALSE(hasTemporaries());
    }
}

TEST_F(Streams, AreReadByEveryCommandThatPlays)
{
    const struct {
        const char* command;
        const char* output; ///< part of the expected output
    } facts[] = {
        {"play --fast", "Playing standard input: 44100 Hz, stereo, 0:01.0\n"},
        {"play --fast --buffered", "Playing standard input: 44100 Hz, stereo, 0:01.0\n"},
        {"play --fast --background", "Playing standard input: 44100 Hz, stereo, 0:01.0\n"},
        {"play --info", "standard input\n  container     WAV (Microsoft)\n"},
        {"play --info --json", "\"path\": \"standard input\""},
        {"soundstream --fast", "Playing standard input: 44100 Hz, stereo, 0:01.0\n"},
        {"render out.wav", "Rendered out.wav: WAV, 32-bit float, 44100 Hz, stereo, 0:01.0\n"},
    };
    for (const auto& fact : facts) {
        std::string command = fact.command;
        const std::size_t name = command.find("out.wav");
        command.insert(name == command.npos ? command.size() : name, name == command.npos ? " -" : "- ");
        SCOPED_TRACE(command);
        const auto result = shell("cat in.wav | $kvx " + command);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_NE(result.out.find(fact.output), std::string::npos) << result.out;
        EXPECT_FALSE(hasTemporaries());
    }
    expectSamples(support::readSound(folder / "out.wav").samples, sound.samples);
}

TEST_F(Streams, ReadStandardInputOnceForSeveralNames)
{
    const auto result = shell("$kvx play --fast --capture out.wav - in.wav - < in.wav");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(support::readSound(folder / "out.wav").frames() / 44100, 3u);
}

TEST_F(Streams, ThatCannotBePlayedAreNamedInTheMessage)
{
    const struct {
        const char* script;
        const char* message;
    } facts[] = {
        {"echo text | $kvx play -",
         "kvx: play: standard input cannot be decoded (it is not a sound file); kvx "
         "plays WAV"},
        {"$kvx play --info - < /dev/null", "kvx: play: standard input is empty; get the file again\n"},
        {"$kvx render - out.wav <&-", "kvx: render: standard input "},
        {"$kvx render - out.wav --start 1 < in.wav",
         "kvx: render: --start 0:01: standard input is only 0:01 long; give a time before 0:01\n"},
        {"head -c 1000 in.wav | $kvx render - out.wav --quiet",
         "kvx: render: standard input is cut short: it holds "},
        {"ulimit -f 8; $kvx play - < in.wav", "kvx: play: standard input cannot be copied to "},
        {"TMPDIR=missing $kvx play - < in.wav", "kvx: play: standard input cannot be copied to missing: No "
                                                "such file or directory; let TMPDIR name a "
                                                "folder with enough free space\n"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.script);
        const auto result = shell(fact.script);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err.substr(0, std::string(fact.message).size()), fact.message);
        EXPECT_EQ(lineCount(result.err), 1u) << result.err;
        EXPECT_EQ(result.err.find(temporary + "/"), std::string::npos) << result.err;
        EXPECT_FALSE(hasTemporaries());
        fs::remove(folder / "out.wav");
    }
}

TEST_F(Streams, OfATerminalAreRefused)
{
    PtyChild reader(kvxCommand({"play", "-"}), 200);
    EXPECT_EQ(reader.wait(), 1);
    EXPECT_NE(reader.shown().find("standard input is a terminal; name a file"), std::string::npos)
        << reader.shown();
    PtyChild writer(kvxCommand({"render", folder / "in.wav", "-"}), 200);
    EXPECT_EQ(writer.wait(), 1);
    EXPECT_EQ(
        writer.shown(),
        "kvx: render: standard output: a terminal cannot play sound; name a file, or give the result to "
        "another program: `kvx render FILE - | PROGRAM`\r\n");
}

// The command waits for the other end of the pipe, or for more bytes.
TEST_F(Streams, EndWithASignalAndLeaveNoCopy)
{
    const struct {
        Arguments command;
        bool hasWriter;
    } facts[] = {
        {{"render", "pipe", "out.wav"}, false},
        {{"render", "pipe", "out.wav"}, true},
        {{"play", "--info", "pipe"}, true},
        {{"render", "in.wav", "pipe"}, false},
    };
    for (const auto& fact : facts)
        for (const int signal : {SIGINT, SIGTERM}) {
            SCOPED_TRACE(testing::PrintToString(fact.command));
            support::Child child(kvxCommand(fact.command), {{"TMPDIR", temporary}}, folder.path());
            const int writer = fact.hasWriter ? open((folder / "pipe").c_str(), O_WRONLY) : -1;
            while (fact.hasWriter && child.isRunning() && !hasTemporaries()) std::this_thread::yield();
            waitUntilAsleep(child, signal);
            child.send(signal);
            const auto result = child.wait();
            EXPECT_EQ(result.exitCode, 128 + signal);
            EXPECT_EQ(result.err, "");
            EXPECT_FALSE(hasTemporaries());
            EXPECT_FALSE(fs::exists(folder / "out.wav"));
            if (fact.hasWriter) close(writer);
        }
}

// ---- standard output and pipes ----

TEST_F(Streams, EndWithTheRenderedFramesAfterASignal)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    support::Child child(kvxCommand({"render", "long.wav", "-"}), {}, folder.path());
    while (child.isRunning() && child.outSoFar().empty()) std::this_thread::yield();
    child.send(SIGTERM);
    const auto result = child.wait();
    EXPECT_EQ(result.exitCode, 143);
    EXPECT_EQ(result.err, "Stopped; the result is cut short.\n");
    EXPECT_EQ(result.out.substr(0, 8), "RIFF\xFF\xFF\xFF\xFF");
}

// The reader of the pipe often ends with the same signal.
TEST_F(Streams, WithoutAReaderAfterASignalAreNoError)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        support::Child child(kvxCommand({"render", "in.wav", "pipe", "--loop", "0:1", "--duration", "1000"}),
                             {}, folder.path());
        const int reader = open((folder / "pipe").c_str(), O_RDONLY);
        // A second writer, which writes nothing, can look whether the pipe is full.
        const int writer = open((folder / "pipe").c_str(), O_WRONLY);
        pollfd free = {writer, POLLOUT, 0};
        while (child.isRunning() && poll(&free, 1, 0) > 0) std::this_thread::yield();
        child.send(signal);
        close(writer);
        close(reader);
        const auto result = child.wait();
        EXPECT_EQ(result.exitCode, 128 + signal);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out, "Stopped; the result is cut short.\n");
    }
}

TEST_F(Streams, ReceiveAWaveOfUnknownLength)
{
    for (const std::string output : {"- > out.wav", "- | cat > out.wav", "/dev/stdout | cat > out.wav",
                                     ">(cat > out.wav)", "pipe & cat pipe > out.wav; wait $!"}) {
        SCOPED_TRACE(output);
        const auto result = shell("$kvx render in.wav " + output);
        EXPECT_EQ(result.exitCode, 0);
        if (output.front() == '-') {
            EXPECT_EQ(result.err, "Rendered standard output: WAV, 32-bit float, 44100 Hz, stereo, 0:01.0\n");
            EXPECT_EQ(result.out, "");
        }
        while (fs::file_size(folder / "out.wav") < 58 + sound.samples.size() * sizeof(float))
            std::this_thread::yield(); // `cat` in >(…) may end after the command
        const std::string bytes = bytesOf(folder / "out.wav");
        EXPECT_EQ(bytes.substr(0, 8), "RIFF\xFF\xFF\xFF\xFF");
        EXPECT_EQ(bytes.substr(50, 8), "data\xFF\xFF\xFF\xFF");
        EXPECT_EQ(bytes.size(), 58 + sound.samples.size() * sizeof(float));
        expectSamples(support::readSound(folder / "out.wav").samples, sound.samples);
        fs::remove(folder / "out.wav");
    }
    EXPECT_EQ(shell("$kvx render in.wav - --quiet > out.wav").err, "");
}

TEST_F(Streams, ReceiveTheFormatsThatNeedNoLength)
{
    for (const std::string more : {"wav --bits 16", "wav --bits 24", "flac", "ogg", "opus", "mp3"}) {
        SCOPED_TRACE(more);
        const auto result =
            shell("$kvx render in.wav - --format " + more + " | $kvx render - again.wav --device-rate 44100");
        EXPECT_EQ(result.exitCode, 0) << result.err;
        const std::size_t frames = support::readSound(folder / "again.wav").frames();
        EXPECT_GE(frames, 44100u);
        EXPECT_LT(frames, 44100u + 3 * 1152); // MP3 without a length has whole blocks of 1152 frames
    }
    for (const std::string format : {"aiff", "caf"}) {
        const auto result = shell("$kvx render in.wav - --format " + format + " | cat");
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find("write to a file, or give --format wav, flac, ogg, opus or mp3"),
                  std::string::npos)
            << result.err;
    }
}

TEST_F(Streams, OfTwoCommandsJoin)
{
    const auto result =
        shell("set -o pipefail; $kvx render in.wav - --quiet | $kvx render - - --quiet | $kvx "
              "render - out.wav");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    expectSamples(support::readSound(folder / "out.wav").samples, sound.samples);
}

// The lengths in the header are 0xFFFFFFFF, because the length of a stream is unknown when its header is
// written. sox warns of a premature end and reads all samples, so its warnings are dropped.
TEST_F(Streams, AreReadByOtherTools)
{
    const struct {
        const char *tool, *command, *output;
    } facts[] = {
        {"sox", "sox -t wav - -t raw - 2>/dev/null | wc -c", "352800\n"},
        {"ffmpeg", "ffmpeg -v error -i - -f f32le - | wc -c", "352800\n"},
        {"ffprobe", "ffprobe -v error -show_entries stream=codec_name,sample_rate,channels -of csv -",
         "stream,pcm_f32le,44100,2\n"},
    };
    std::string missing;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.command);
        if (shell("command -v " + std::string(fact.tool)).exitCode != 0) {
            missing += std::string(" ") + fact.tool;
            continue;
        }
        const auto result = shell("$kvx render in.wav - --quiet | " + std::string(fact.command));
        EXPECT_EQ(result.out, fact.output) << result.err;
    }
    if (!missing.empty()) GTEST_SKIP() << "not installed:" << missing;
}

TEST_F(Streams, WithoutAReaderFailWithAMessage)
{
    const struct {
        const char* script;
        const char* message;
    } facts[] = {
        {"{ $kvx render in.wav -; echo $? > code; } | true",
         "kvx: render: standard output cannot be written; check that its disk has free space and that its "
         "reader still runs\n"},
        {"{ $kvx render in.wav -; echo $? > code; } > /dev/full",
         "kvx: render: standard output cannot be written; check that its disk has free space and that its "
         "reader still runs\n"},
        {"$kvx render in.wav /dev/full; echo $? > code",
         "kvx: render: /dev/full cannot be written: No space left on device; free some space on the disk\n"},
        {"head -c 1 pipe > /dev/null & $kvx render in.wav pipe; echo $? > code",
         "kvx: render: pipe cannot be written: Broken pipe; check that the reader of the pipe still runs\n"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.script);
        EXPECT_EQ(shell(fact.script).err, fact.message);
        EXPECT_EQ(bytesOf(folder / "code"), "1\n");
    }
    const auto result = shell("$kvx render in.wav /dev/null");
    EXPECT_EQ(result.out, "Rendered /dev/null: WAV, 32-bit float, 44100 Hz, stereo, 0:01.0\n") << result.err;
}

} // namespace
