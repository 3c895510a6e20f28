// `kvx play` through PortAudio to a real sound server: the recorded stream equals the file, sample by sample.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/expected_samples.h"
#include "tests/endtoend/soundserver/sound_server.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <thread>

namespace {

using namespace endtoend;

constexpr int rate = 48000;

/// Return a sweep after eight seconds of silence, during which the recorder connects to the player. A rate
/// conversion rings during the quarter of a second of silence after the sweep.
support::Sound makeDelayedSweep(int fileRate)
{
    support::Sound sound = support::makeSweep(fileRate, 2, fileRate * 4);
    sound.samples.insert(sound.samples.begin(), fileRate * 16, 0.0f);
    sound.samples.insert(sound.samples.end(), fileRate / 2, 0.0f);
    return sound;
}

/// Play a file on a sound server, record its sound, and expect the samples from the first one that is not 0.
void expectRecording(const std::string& file, const support::Sound& sound, int periodFrames)
{
    SoundServer server(rate, periodFrames);
    Recorder recorder(60);
    ASSERT_EQ(recorder.sampleRate(), rate);
    auto environment = server.environment();
    environment.push_back({"KVX_AUDIO_DEVICE", "system"});
    support::Child player(kvxCommand({"play", file}), environment);
    bool isConnected = false;
    while (player.isRunning() && !(isConnected = recorder.connectToPlayer()))
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const std::vector<float> before = recorder.samples();
    ASSERT_TRUE(isConnected) << player.wait().err;
    EXPECT_EQ(recorder.playerName(), "kvx") << "the name in the patch bay";
    ASSERT_TRUE(std::all_of(before.begin(), before.end(), [](float sample) { return sample == 0.0f; }))
        << "the recorder connected after the start of the sound";
    const auto result = player.wait();
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");

    const std::vector<float> recorded = recorder.samples();
    const std::size_t silence = support::leadingSilence(sound) * 2;
    const std::vector<float> expected(sound.samples.begin() + std::ptrdiff_t(silence), sound.samples.end());
    const auto first =
        std::find_if(recorded.begin(), recorded.end(), [](float sample) { return sample != 0.0f; });
    const auto start = std::size_t(first - recorded.begin()) / 2 * 2;
    ASSERT_LE(start + expected.size(), recorded.size()) << "the recording ends early";
    expectThenSilence({recorded.begin() + std::ptrdiff_t(start), recorded.end()}, expected);
}

TEST(SoundServer, IsFoundByDoctor)
{
    SoundServer server(rate);
    auto environment = server.environment();
    environment.push_back({"KVX_AUDIO_DEVICE", ""}); // an empty KVX_AUDIO_DEVICE chooses no device
    const auto result = support::runChild(kvxCommand({"doctor"}), environment);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    for (const char* part :
         {"ok       output                `kvx play` plays to system\n", ", JACK Audio Connection Kit\n",
          "ok       JACK server           is running\n", "ok       JACK_DEFAULT_SERVER   \"kvx-test\"\n"})
        EXPECT_NE(result.out.find(part), std::string::npos) << part << result.out;
}

TEST(SoundServer, ReceivesTheFileSampleForSample)
{
    const support::TemporaryFolder folder;
    const support::Sound sound = makeDelayedSweep(rate);
    support::writeSound(sound, folder / "sweep.wav");
    expectRecording(folder / "sweep.wav", sound, 1024);
}

// A rate conversion returns its output in bursts, but short periods lose nothing of it.
TEST(SoundServer, ReceivesAConvertedFileAsItIsRendered)
{
    const support::TemporaryFolder folder;
    support::writeSound(makeDelayedSweep(44100), folder / "sweep.wav");
    const auto render =
        runKvx({"render", folder / "sweep.wav", folder / "rendered.wav", "--device-rate", "48000"});
    ASSERT_EQ(render.exitCode, 0) << render.err;
    expectRecording(folder / "sweep.wav", support::readSound(folder / "rendered.wav"), 64);
}

TEST(SoundServer, IsNamedInTheDeviceList)
{
    SoundServer server(rate);
    auto environment = server.environment();
    environment.push_back({"KVX_AUDIO_DEVICE", ""});
    const auto result = support::runChild(kvxCommand({"devices", "--json"}), environment);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    std::string systemOfServer;
    for (const auto& device : nlohmann::json::parse(result.out))
        if (device["name"] == "system") systemOfServer = device["system"];
    EXPECT_EQ(systemOfServer, "JACK");
}

} // namespace
