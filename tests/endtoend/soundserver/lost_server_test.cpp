// Sound servers that crash, hang or start late: the command ends with one message and leaves no unfinished
// file, and the platform notifies the listeners of a program.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/soundserver/sound_server.h"
#include "tests/support/sound_samples.h"

#include <CoreAudio/CoreAudio.h>
#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace endtoend;

constexpr int rate = 48000;

void pause() { std::this_thread::sleep_for(std::chrono::milliseconds(10)); }

/// A `kvx play` that plays to a sound server of this test. The constructor returns when the server receives
/// sound.
struct ServerPlayer {
    ServerPlayer()
    {
        support::writeSound(support::makeSweep(rate, 2, rate * 60), folder / "long.wav");
        auto environment = server.environment();
        environment.push_back({"KVX_AUDIO_DEVICE", "system"});
        recorder = std::make_unique<Recorder>(1);
        command = std::make_unique<support::Child>(kvxCommand({"play", "--capture", "out.wav", "long.wav"}),
                                                   environment, folder.path());
        while (command->isRunning() && !recorder->connectToPlayer()) pause();
        while (command->isRunning() && !recorder->hasSound())
            pause(); // the stream is connected before the sound starts
    }
    ~ServerPlayer() { server.kill(); } // on a suspended server, closing the recorder would hang

    SoundServer server{rate};
    support::TemporaryFolder folder;
    std::unique_ptr<Recorder> recorder;
    std::unique_ptr<support::Child> command;
};

TEST(LostSoundServer, EndsPlayWithAMessageWithoutHanging)
{
    const struct {
        const char* what;
        void (SoundServer::*end)();
    } facts[] = {{"killed", &SoundServer::kill}, {"suspended", &SoundServer::suspend}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.what);
        ServerPlayer player;
        ASSERT_TRUE(player.command->isRunning()) << player.command->wait().err;
        (player.server.*fact.end)();
        const auto result = player.command->wait();
        EXPECT_EQ(result.exitCode, 1) << "signal " << result.signal;
        expectMessage(result, "play");
        EXPECT_NE(result.err.find("system was disconnected during playback; choose another device"),
                  std::string::npos)
            << result.err;
        EXPECT_EQ(player.folder.count(), 1u) << "no unfinished capture";
    }
}

// At a logout, a server and kvx are killed together: kvx may close a stream of a dead server before or after
// the loss of the server is reported. The test has several rounds, to reach both orders.
TEST(LostSoundServer, AtTheTimeOfASignalLeavesNoUnfinishedFile)
{
    for (int round = 0; round < 6; ++round) {
        SCOPED_TRACE(round);
        ServerPlayer player;
        player.server.kill();
        player.command->send(SIGINT);
        const auto result = player.command->wait();
        EXPECT_TRUE(result.signal == 0 || result.signal == SIGINT) << result.signal << result.err;
        for (const auto& entry : std::filesystem::directory_iterator(player.folder.path()))
            EXPECT_NE(entry.path().extension(), ".part");
    }
}

TEST(LostSoundServer, IsReportedByTheDeviceWatch)
{
    SoundServer server(rate);
    auto environment = server.environment();
    environment.push_back({"KVX_AUDIO_DEVICE", ""});
    support::Child watch(kvxCommand({"devices", "--watch"}), environment);
    const auto waitForText = [&](const char* text) {
        while (watch.isRunning() && watch.outSoFar().find(text) == std::string::npos) pause();
    };
    waitForText("Simulated Input"); // wait for the last row of the device table
    server.kill();
    waitForText("no longer alive");
    waitForText("default output: from system (id 2) to Simulated Device");
    watch.send(SIGINT);
    const auto result = watch.wait();
    EXPECT_EQ(result.exitCode, 130) << "signal " << result.signal;
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out.find("system (id 2): no longer alive\n"), std::string::npos) << result.out;
}

TEST(LostSoundServer, SuspendedServerFailsWithAMessageWithoutHanging)
{
    SoundServer server(rate);
    support::TemporaryFolder folder;
    support::writeSound(support::makeSweep(rate, 2, rate), folder / "short.wav");
    auto environment = server.environment();
    environment.push_back({"KVX_AUDIO_DEVICE", ""});
    server.suspend();
    const Arguments commands[] = {
        {"devices"}, {"get", "0"}, {"play", "short.wav"}, {"play", "--device", "system", "short.wav"}};
    for (const auto& command : commands) {
        SCOPED_TRACE(testing::PrintToString(command));
        const auto result = support::runChild(kvxCommand(command), environment, folder.path());
        EXPECT_EQ(result.exitCode, 1) << "signal " << result.signal;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "kvx: " + command.front() +
                                  ": the sound server does not answer; restart it, or set "
                                  "`KVX_AUDIO_DEVICE=simulated`\n");
    }
    const auto simulated = support::runChild(
        kvxCommand({"play", "--fast", "--device", "simulated", "short.wav"}), environment, folder.path());
    EXPECT_EQ(simulated.exitCode, 0) << simulated.err;
}

// ---- in a program ----

std::atomic<int> calls{0}, notifications{0};

OSStatus countCall(AudioDeviceID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
                   AudioBufferList*, const AudioTimeStamp*, void*)
{
    ++calls;
    return noErr;
}

OSStatus countNotification(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*)
{
    ++notifications;
    return noErr;
}

/// Return the device of the sound server if the device list has one that is alive, or 0.
KVXDeviceID serverDevice()
{
    std::vector<KVXDeviceInfo> rows(64);
    rows.resize(KVXPlatformGetDevices(rows.data(), 64));
    for (const KVXDeviceInfo& row : rows)
        if (std::string(row.name) == "system" && row.isAlive) return row.device;
    return 0;
}

TEST(LostSoundServer, NewServersAreListedAndTheirLossIsNotified)
{
    setenv("KVX_AUDIO_DEVICE", "", 1);
    setenv("JACK_NO_START_SERVER", "1", 1);
    setenv("JACK_DEFAULT_SERVER", "kvx-test", 1);
    ASSERT_EQ(serverDevice(), 0u) << "no server runs yet";

    SoundServer server(rate);
    ASSERT_EQ(KVXPlatformRefreshDevices(), 0) << KVXPlatformErrorText();
    const KVXDeviceID device = serverDevice();
    ASSERT_NE(device, 0u);

    const AudioObjectPropertyAddress alive = {kAudioDevicePropertyDeviceIsAlive,
                                              kAudioObjectPropertyScopeGlobal, 0};
    ASSERT_EQ(AudioObjectAddPropertyListener(device, &alive, countNotification, nullptr), noErr);
    ASSERT_EQ(AudioDeviceAddIOProc(device, countCall, nullptr), noErr);
    ASSERT_EQ(AudioDeviceStart(device, countCall), noErr);
    while (calls < 3) pause();
    server.kill();
    while (notifications == 0) pause();
    EXPECT_EQ(serverDevice(), 0u);
    const int before = calls;
    while (calls < before + 3)
        pause(); // a timer runs I/O cycles of a dead device, so that I/O procedures can stop
    EXPECT_EQ(AudioDeviceStop(device, countCall), noErr);
    EXPECT_EQ(AudioDeviceRemoveIOProc(device, countCall), noErr);
    EXPECT_EQ(AudioObjectRemovePropertyListener(device, &alive, countNotification, nullptr), noErr);
    EXPECT_EQ(notifications, 1);
    EXPECT_NE(KVXPlatformRefreshDevices(), 0) << "a lost stream cannot be closed";
}

} // namespace
