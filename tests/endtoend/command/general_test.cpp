// The program kvx in ordinary use: help, lists, playback messages, captures, signals.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/command/pty_child.h"
#include "tests/support/sound_samples.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

namespace {

using namespace endtoend;

using Kvx = KvxTest;

TEST_F(Kvx, EveryCommandPrintsHelp)
{
    for (const Arguments& arguments : std::vector<Arguments>{{"--help"},
                                                             {"play", "--help"},
                                                             {"render", "--help"},
                                                             {"soundstream", "--help"},
                                                             {"classes", "--help"},
                                                             {"devices", "--help"},
                                                             {"get", "--help"},
                                                             {"set", "--help"},
                                                             {"tune", "--help"},
                                                             {"doctor", "--help"},
                                                             {"picture", "--help"},
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

TEST_F(Kvx, ListsTheFiveClasses)
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

TEST_F(Kvx, PrintsTheMembersOfAClass)
{
    const auto result = runKvx({"classes", "coreaudioplayerkvx"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    for (const char* line :
         {"CoreAudioPlayerKVX", "SampleRate as ", "IsRunning as ", "(read)", "(read, write)",
          "AddFloatAudio(FloatData as memoryblock, offsetBytes as integer=0, countBytes as integer=0, "
          "ClearBuffers as boolean=false) as boolean"})
        EXPECT_NE(result.out.find(line), std::string::npos) << line;
}

TEST_F(Kvx, PrintsClassesAsJson)
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

TEST_F(Kvx, ListsDevicesWithTheDefault)
{
    const auto result = runKvx({"devices"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("Simulated"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("default"), std::string::npos) << result.out;
}

TEST_F(Kvx, PrintsPlainLinesWithoutATerminal)
{
    support::writeSound(support::makeNoise(48000, 1, 48000 * 2), folder / "one.wav");
    support::writeSound(support::makeNoise(48000, 6, 24000), folder / "six.wav");
    const auto result = run({"play", "--fast", "one.wav", "six.wav"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    for (const char* part :
         {"Playing one.wav: 48000 Hz, mono, 0:02.0", "Playing six.wav: 48000 Hz, 6 channels, 0:00.5",
          "It plays channels 0 and 1 of its 6, and drops channels 2 to 5."})
        EXPECT_NE(result.out.find(part), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find('\r'), std::string::npos);
    EXPECT_EQ(folder.count(), 2u) << "no files besides the input";
}

TEST_F(Kvx, PrintsNothingWithQuiet)
{
    support::writeSound(support::makeNoise(44100, 2, 4410), folder / "a.wav");
    const auto result = run({"play", "--fast", "--quiet", "a.wav"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST_F(Kvx, KeepWritesSoundAndWaveform)
{
    ASSERT_EQ(run({"tune", "tune.wav"}).exitCode, 0);
    const auto result = run({"play", "--fast", "--keep", "kept.wav", "tune.wav"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find(folder / "kept.wav"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(folder / "kept.png"), std::string::npos) << result.out;
    EXPECT_GT(std::filesystem::file_size(folder / "kept.png"), 1000u);
    const auto tune = support::readSound(folder / "tune.wav"), kept = support::readSound(folder / "kept.wav");
    EXPECT_GE(kept.frames() + support::leadingSilence(tune), tune.frames());
    EXPECT_EQ(folder.count(), 3u);
}

TEST_F(Kvx, RefusesNamesOfOtherFormatsForFilesThatAreWave)
{
    ASSERT_EQ(run({"tune", "tune.WAV"}).exitCode, 0);
    const struct {
        Arguments command;
        const char* message;
    } facts[] = {
        {{"tune", "t.Flac"},
         "kvx: tune: t.Flac: the file is WAV and not FLAC; name a file that ends in .wav"},
        {{"play", "tune.WAV", "--capture", "c.mp3"},
         "kvx: play: --capture c.mp3: the file is WAV and not MP3; name a file that ends in .wav"},
        {{"play", "tune.WAV", "--keep", "k.ogg"},
         "kvx: play: --keep k.ogg: the file is WAV and not Ogg Vorbis; name a file that ends in .wav"},
        {{"soundstream", "tune.WAV", "--capture", "c.aif"},
         "kvx: soundstream: --capture c.aif: the file is WAV and not AIFF; name a file that ends in .wav"},
    };
    for (const auto& fact : facts) {
        const auto result = run(fact.command);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.err, std::string(fact.message) + "; --help lists the arguments\n");
    }
    EXPECT_EQ(folder.count(), 1u);
}

TEST_F(Kvx, KeepWritesSoundAndPictureAfterASignal)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    support::Child child(kvxCommand({"play", "--keep", "kept", "long.wav"}), {}, folder.path());
    while (child.isRunning() && unfinishedBytes() < 44100 * 2 * sizeof(float))
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    child.send(SIGINT);
    const auto result = child.wait();
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.err, "");
    EXPECT_GT(support::readSound(folder / "kept.wav").frames(), 44100u);
    EXPECT_GT(std::filesystem::file_size(folder / "kept.png"), 1000u);
    EXPECT_EQ(folder.count(), 3u);
}

TEST_F(Kvx, PlaysWithEveryHostVersion)
{
    support::writeSound(support::makeNoise(44100, 2, 4410), folder / "a.wav");
    for (const char* version : {"2010.5", "2012.99", "2013.03", "2015.03", "2016.0"}) {
        const auto result = run({"play", "--fast", "--host-version", version, "a.wav"});
        EXPECT_EQ(result.exitCode, 0) << version << ": " << result.err;
        EXPECT_EQ(result.err, "") << version;
    }
}

TEST_F(Kvx, SignalStopsPlaybackAndFinishesTheCapture)
{
    const auto sound = support::makeNoise(44100, 2, 44100 * 60);
    support::writeSound(sound, folder / "long.wav");
    expectSignalsFinishTheCapture({"play", "--capture", "out.wav", "long.wav"}, sound);
}

// Like nohup, this test starts the program with SIGHUP ignored.
TEST_F(Kvx, ContinuesAfterAnIgnoredHangup)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    support::Child child(
        {"sh", "-c",
         "trap '' HUP; exec " + std::string(kvxPath) + " play --device simulated --capture out.wav long.wav"},
        {}, folder.path());
    const auto waitForSeconds = [&](unsigned seconds) {
        while (child.isRunning() && unfinishedBytes() < 44100 * 2 * sizeof(float) * seconds)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    };
    waitForSeconds(1);
    child.send(SIGHUP);
    waitForSeconds(2);
    child.send(SIGTERM);
    EXPECT_EQ(child.wait().exitCode, 143);
}

// The test sends the signal as soon as the unfinished capture exists.
TEST_F(Kvx, EarlySignalLeavesNoUnfinishedCapture)
{
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

TEST_F(Kvx, WritesACaptureToOneTemporaryFile)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 60), folder / "long.wav");
    support::Child child(kvxCommand({"play", "--capture", "out.wav", "long.wav"}), {}, folder.path());
    while (child.isRunning() && unfinishedBytes() == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(folder.count(), 2u);
    child.send(SIGTERM);
    child.wait();
}

// Without keys, the terminal prints "^C" after the progress line, so the final message must start on the next
// line.
TEST_F(Kvx, PrintsStoppedOnTheLineAfterCtrlC)
{
    support::writeSound(support::makeNoise(44100, 2, 44100 * 10), folder / "long.wav");
    PtyChild child(kvxCommand({"render", folder / "long.wav", folder / "out.wav", "--pitch", "100", "--loop",
                               "0:10", "--duration", "1:00:00"}));
    ASSERT_TRUE(child.waitFor(" %")) << child.shown();
    child.type("\x03");
    EXPECT_EQ(child.wait(), 130);
    const auto at = child.shown().find("^C");
    ASSERT_NE(at, std::string::npos) << child.shown();
    EXPECT_NE(child.shown().find("\r\nStopped; nothing was written.", at), std::string::npos)
        << child.shown();
}

TEST_F(Kvx, FailsWhenStandardOutputCannotBeWritten)
{
    support::writeSound(support::makeNoise(44100, 2, 44100), folder / "a.wav");
    const struct {
        std::string command, arguments;
    } facts[] = {{"classes", ""},     {"classes", "CoreAudioPlayerKVX"}, {"devices", ""},
                 {"tune", "out.wav"}, {"play", "--fast a.wav"},          {"", "--help"}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.command + " " + fact.arguments);
        const auto result = support::runChild(
            {"sh", "-c", kvxPath + (" " + fact.command + " " + fact.arguments) + " >/dev/full"}, {},
            folder.path());
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_NE(result.err.find("standard output"), std::string::npos) << result.err;
        expectMessage(result, fact.command);
    }
}

TEST_F(Kvx, PrintsFileNamesWithoutControlCharacters)
{
    support::writeSound(support::makeNoise(44100, 2, 4410), folder / "red\x1b[31m.wav");
    const auto good = run({"play", "--fast", "red\x1b[31m.wav"});
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(good.out.find('\x1b'), std::string::npos);
    EXPECT_NE(good.out.find("[31m.wav"), std::string::npos) << good.out;
    const auto bad = run({"play", "no\nsuch\x1b.wav"});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.err.find('\x1b'), std::string::npos);
    expectMessage(bad, "play");
}

} // namespace
