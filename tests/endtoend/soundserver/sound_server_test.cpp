// `kvx play` through PortAudio to a real sound server: the recorded stream equals the file, sample by sample.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/expected_samples.h"
#include "tests/endtoend/soundserver/sound_server.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace {

using namespace endtoend;

constexpr int rate = 48000;

/// Return a sweep after eight seconds of silence. The recorder connects to the player during the silence.
support::Sound makeDelayedSweep()
{
    support::Sound sound = support::makeSweep(rate, 2, rate * 4);
    sound.samples.insert(sound.samples.begin(), rate * 16, 0.0f);
    return sound;
}

TEST(SoundServer, ReceivesTheFileSampleForSample)
{
    SoundServer server(rate);
    support::TemporaryFolder folder;
    const support::Sound sound = makeDelayedSweep();
    support::writeSound(sound, folder / "sweep.wav");

    Recorder recorder(60);
    ASSERT_EQ(recorder.sampleRate(), rate);
    auto environment = server.environment();
    environment.push_back({"KVX_AUDIO_DEVICE", "system"});
    support::Child player(kvxCommand({"play", folder / "sweep.wav"}), environment);
    bool isConnected = false;
    while (player.isRunning() && !(isConnected = recorder.connectToPlayer()))
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const std::vector<float> before = recorder.samples();
    ASSERT_TRUE(isConnected) << player.wait().err;
    ASSERT_TRUE(std::all_of(before.begin(), before.end(), [](float sample) { return sample == 0.0f; }))
        << "the recorder connected after the start of the sound";
    const auto result = player.wait();
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");

    const std::vector<float> recorded = recorder.samples();
    const std::size_t silence = support::leadingSilence(sound) * 2;
    const std::vector<float> sweep(sound.samples.begin() + std::ptrdiff_t(silence), sound.samples.end());
    const auto first =
        std::find_if(recorded.begin(), recorded.end(), [](float sample) { return sample != 0.0f; });
    const auto start = std::size_t(first - recorded.begin()) / 2 * 2;
    ASSERT_LE(start + sweep.size(), recorded.size()) << "the recording ends early";
    expectThenSilence({recorded.begin() + std::ptrdiff_t(start), recorded.end()}, sweep);
}

} // namespace
