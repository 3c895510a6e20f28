// The command when all is well: help, lists, what it says while it plays, how it is stopped.
#include "tests/endtoend/kvx_runner.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

namespace {

using namespace endtoend;

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
          "Of its 6 channels the first two are heard."})
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
    } facts[] = {{SIGINT, 130, {}}, {SIGTERM, 143, {}}};
    for (const auto& fact : facts) {
        support::TemporaryFolder folder;
        const auto sound = support::makeNoise(44100, 2, 44100 * 60);
        support::writeSound(sound, folder / "long.wav");
        support::Child child(kvxCommand({"play", "--capture", "out.wav", "long.wav"}), {}, folder.path());
        while (child.isRunning() && child.outSoFar().find("Playing") == std::string::npos)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
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

} // namespace
