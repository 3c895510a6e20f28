// The command when all is well: help, lists, what it says while it plays, how it is stopped.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <pty.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace endtoend;

/// Bytes of the largest file that is being written, named as such.
std::uintmax_t largestUnfinished(const support::TemporaryFolder& folder)
{
    std::uintmax_t size = 0;
    std::error_code ignored; // it may be given its name meanwhile
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        if (entry.path().extension() == ".part")
            if (const auto each = entry.file_size(ignored); !ignored) size = std::max(size, each);
    return size;
}

TEST(Kvx, HelpsEverywhere)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--help"},
                                               {"play", "--help"},
                                               {"classes", "--help"},
                                               {"devices", "--help"},
                                               {"tune", "--help"},
                                               {"-h"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const auto result = runKvx(arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_NE(result.out.find("Usage"), std::string::npos);
        EXPECT_EQ(result.err, "");
    }
    EXPECT_NE(runKvx({"play", "--help"}).out.find("--device-rate"), std::string::npos);
    for (const char* code : {"129", "130", "143"})
        EXPECT_NE(runKvx({"--help"}).out.find(code), std::string::npos) << code;
}

TEST(Kvx, ListsTheFiveClasses)
{
    const auto result = runKvx({"classes"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(lineCount(result.out), 5u);
    std::size_t at = 0;
    for (const char* name :
         {"AUPlayerKVX", "CoreAudioKVX", "CoreAudioListenerKVX", "CoreAudioPlayerKVX", "QTSoundStreamKVX"}) {
        at = result.out.find(name, at);
        ASSERT_NE(at, std::string::npos) << name;
    }
}

TEST(Kvx, PrintsAClassWithItsMembers)
{
    const auto result = runKvx({"classes", "coreaudioplayerkvx"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    for (const char* line :
         {"CoreAudioPlayerKVX", "SampleRate as ", "IsRunning as ", "(read)", "(read, write)",
          "AddFloatAudio(FloatData as memoryblock, offsetBytes as integer=0, countBytes as integer=0, "
          "ClearBuffers as boolean=false) as boolean"})
        EXPECT_NE(result.out.find(line), std::string::npos) << line;
}

TEST(Kvx, PrintsClassesAsJson)
{
    const auto all = nlohmann::json::parse(runKvx({"classes", "--json"}).out);
    ASSERT_EQ(all.size(), 5u);
    const auto player = nlohmann::json::parse(runKvx({"classes", "CoreAudioPlayerKVX", "--json"}).out);
    EXPECT_EQ(player, all[3]);
    EXPECT_EQ(player["name"], "CoreAudioPlayerKVX");
    EXPECT_EQ(player["layout"], 13);
    EXPECT_EQ(player["properties"].size(), 8u);
    EXPECT_EQ(player["methods"].size(), 15u);
    EXPECT_EQ(player["properties"][0]["name"], "OutputPositionRelative");
    EXPECT_EQ(player["properties"][0]["readOnly"], true);
    EXPECT_EQ(player["properties"][1]["readOnly"], false);
    const auto old = nlohmann::json::parse(
        runKvx({"classes", "CoreAudioPlayerKVX", "--json", "--host-version", "2011.5"}).out);
    EXPECT_EQ(old["layout"], 9);
    EXPECT_EQ(old["methods"], player["methods"]);
}

TEST(Kvx, ListsDevicesWithTheDefault)
{
    const auto result = runKvx({"devices"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("Simulated"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("default"), std::string::npos) << result.out;
}

TEST(Kvx, SaysWhatItPlaysInPlainLinesWhereThereIsNoTerminal)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(48000, 1, 48000 * 2), folder / "one.wav");
    support::writeSound(support::makeNoise(48000, 6, 24000), folder / "six.wav");
    const auto result = runKvx({"play", "--fast", "one.wav", "six.wav"}, folder.path());
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    for (const char* part :
         {"Playing one.wav: 48000 Hz, mono, 0:02.0", "Playing six.wav: 48000 Hz, 6 channels, 0:00.5",
          "It plays the first 2 of its 6 channels."})
        EXPECT_NE(result.out.find(part), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find('\r'), std::string::npos);
    EXPECT_EQ(folder.count(), 2u) << "nothing is kept that nobody asked for";
}

TEST(Kvx, IsQuietWhenTold)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 4410), folder / "a.wav");
    const auto result = runKvx({"play", "--fast", "--quiet", "a.wav"}, folder.path());
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST(Kvx, KeepsSoundAndPictureOfTheSimulatedDevice)
{
    support::TemporaryFolder folder;
    ASSERT_EQ(runKvx({"tune", "tune.wav"}, folder.path()).exitCode, 0);
    const auto result = runKvx({"play", "--fast", "--keep", "kept", "tune.wav"}, folder.path());
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find(folder / "kept.wav"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(folder / "kept.png"), std::string::npos) << result.out;
    EXPECT_GT(std::filesystem::file_size(folder / "kept.png"), 1000u);
    const auto tune = support::readSound(folder / "tune.wav"), kept = support::readSound(folder / "kept.wav");
    EXPECT_GE(kept.frames() + support::leadingSilence(tune), tune.frames());
    EXPECT_EQ(folder.count(), 3u);
}

TEST(Kvx, PlaysWithEveryHostVersion)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 4410), folder / "a.wav");
    for (const char* version : {"2010.5", "2012.99", "2013.03", "2015.03", "2016.0"}) {
        const auto result = runKvx({"play", "--fast", "--host-version", version, "a.wav"}, folder.path());
        EXPECT_EQ(result.exitCode, 0) << version << ": " << result.err;
        EXPECT_EQ(result.err, "") << version;
    }
}

// Ended by a signal in the middle: the device stops, the capture holds what was heard, and is a whole file.
TEST(Kvx, StopsCleanlyOnASignal)
{
    const struct {
        int signal, exitCode;
        std::vector<std::string> more;
    } facts[] = {{SIGINT, 130, {}}, {SIGTERM, 143, {}}, {SIGHUP, 129, {}}};
    for (const auto& fact : facts) {
        support::TemporaryFolder folder;
        const auto sound = support::makeNoise(44100, 2, 44100 * 60);
        support::writeSound(sound, folder / "long.wav");
        support::Child child(kvxCommand({"play", "--capture", "out.wav", "long.wav"}), {}, folder.path());
        // A second of sound in the file that grows: more than the silence at the beginning.
        while (child.isRunning() && largestUnfinished(folder) < 44100 * 2 * sizeof(float))
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        child.send(fact.signal);
        const auto result = child.wait();
        EXPECT_EQ(result.exitCode, fact.exitCode);
        EXPECT_EQ(result.err, "");
        EXPECT_NE(result.out.find("Stopped."), std::string::npos) << result.out;

        const auto captured = support::readSound(folder / "out.wav");
        const auto first = std::ptrdiff_t(support::leadingSilence(captured) * 2);
        auto last = captured.samples.end();
        while (last != captured.samples.begin() + first && *(last - 1) == 0.0f) --last;
        EXPECT_LT(captured.frames(), sound.frames());
        EXPECT_GT(last - captured.samples.begin(), first) << "something was heard";
        EXPECT_TRUE(std::equal(captured.samples.begin() + first, last, sound.samples.begin()));
        EXPECT_EQ(folder.count(), 2u);
    }
}

// As nohup starts it: the terminal closes, and the sound goes on.
TEST(Kvx, PlaysOnAfterAnIgnoredHangup)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    support::Child child(
        {"sh", "-c",
         "trap '' HUP; exec " + std::string(kvxPath) + " play --device simulated --capture out.wav long.wav"},
        {}, folder.path());
    const auto waitForSeconds = [&](unsigned seconds) {
        while (child.isRunning() && largestUnfinished(folder) < 44100 * 2 * sizeof(float) * seconds)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    };
    waitForSeconds(1);
    child.send(SIGHUP);
    waitForSeconds(2);
    child.send(SIGTERM);
    EXPECT_EQ(child.wait().exitCode, 143);
}

// Ended as soon as there is anything to clear away: a capture without sound is none.
TEST(Kvx, LeavesNothingHalfMadeWhenStoppedEarly)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    support::Child child(kvxCommand({"play", "--capture", "out.wav", "long.wav"}), {}, folder.path());
    std::size_t most = 0;
    while (child.isRunning() && most < 2) most = std::max(most, folder.count());
    child.send(SIGINT);
    const auto result = child.wait();
    EXPECT_EQ(result.exitCode, 130) << "signal " << result.signal << " " << result.err;
    EXPECT_EQ(folder.count(), 1u + std::filesystem::exists(folder / "out.wav"));
    EXPECT_EQ(result.err, "");
}

TEST(Kvx, WritesACaptureAsideUnderOneName)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    support::Child child(kvxCommand({"play", "--capture", "out.wav", "long.wav"}), {}, folder.path());
    while (child.isRunning() && largestUnfinished(folder) == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(folder.count(), 2u);
    child.send(SIGTERM);
    child.wait();
}

// A terminal writes "^C" where the line is shown; what follows begins on the next one.
TEST(Kvx, SaysThatItStoppedBelowTheCtrlC)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    const std::string file = folder / "long.wav";
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(child, 0);
    if (child == 0) {
        execl(kvxPath, kvxPath, "play", "--buffered", file.c_str(), nullptr);
        _exit(127);
    }
    std::string shown;
    bool isAsked = false;
    char chunk[4096];
    for (ssize_t got; (got = read(terminal, chunk, sizeof chunk)) > 0;) {
        shown.append(chunk, std::size_t(got));
        if (!isAsked && shown.find(" dB") != std::string::npos) isAsked = write(terminal, "\x03", 1) == 1;
    }
    int status = 0;
    waitpid(child, &status, 0);
    close(terminal);
    EXPECT_EQ(WEXITSTATUS(status), 130);
    const auto at = shown.find("^C");
    ASSERT_NE(at, std::string::npos) << shown;
    EXPECT_NE(shown.find("\r\nStopped.", at), std::string::npos) << shown;
}

TEST(Kvx, FailsWhenWhatItSaysCannotBeWritten)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 44100), folder / "a.wav");
    for (const char* command : {"classes", "classes CoreAudioPlayerKVX", "devices", "tune out.wav",
                                "play --fast a.wav", "--help"}) {
        SCOPED_TRACE(command);
        const auto result = support::runChild(
            {"sh", "-c", std::string(kvxPath) + " " + command + " >/dev/full"}, {}, folder.path());
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_NE(result.err.find("standard output"), std::string::npos) << result.err;
        EXPECT_EQ(lineCount(result.err), 1u) << result.err;
    }
}

TEST(Kvx, PrintsNamesWithoutTheirControlCharacters)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 4410), folder / "red\x1b[31m.wav");
    const auto good = runKvx({"play", "--fast", "red\x1b[31m.wav"}, folder.path());
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(good.out.find('\x1b'), std::string::npos);
    EXPECT_NE(good.out.find("[31m.wav"), std::string::npos) << good.out;
    const auto bad = runKvx({"play", "no\nsuch\x1b.wav"}, folder.path());
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.err.find('\x1b'), std::string::npos);
    EXPECT_EQ(lineCount(bad.err), 1u) << bad.err;
}

} // namespace
