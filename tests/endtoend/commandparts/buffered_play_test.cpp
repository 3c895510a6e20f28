// The playback of `kvx play --buffered` and the leak report, called directly, in cases that the whole command
// cannot produce.
#include "host/kvx/library/library.h"
#include "host/kvx/play/buffered_play.h"
#include "host/kvx/text/failure.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace endtoend;

kvx::LibraryOptions library()
{
    kvx::LibraryOptions options;
    options.path = libraryPath;
    return options;
}

KVXDeviceInfo makeDefault(const SteppedDevice& device)
{
    EXPECT_EQ(KVXPlatformChooseOutputDevice("Stepped"), 0) << KVXPlatformErrorText();
    KVXDeviceInfo info = {};
    info.device = device.id();
    return kvx::deviceNow(info);
}

kvx::Playlist writeNoise(const support::TemporaryFolder& folder, int channels, int seconds)
{
    support::writeSound(support::makeNoise(44100, channels, 44100u * unsigned(seconds)), folder / "a.wav");
    return kvx::planPlaylist({folder / "a.wav"});
}

// A player whose device refused to start reports that it runs, and cannot be stopped; the command must still
// end.
TEST(BufferedPlayDeathTest, DeviceThatRefusesToStartFailsWithAMessage)
{
    support::TemporaryFolder folder;
    const kvx::Playlist playlist = writeNoise(folder, 2, 1);
    EXPECT_EXIT(
        {
            kvx::Library loaded(library());
            SteppedDevice device;
            const KVXDeviceInfo info = makeDefault(device);
            KVXPlatformRefuseStart(device.id(), -50);
            try {
                kvx::BufferedPlayer playback(loaded.host(), playlist[0], 1.0f);
                playback.start(info);
            } catch (const kvx::Failure& failure) {
                std::fprintf(stderr, "%s\n", failure.what());
                std::_Exit(7);
            }
        },
        testing::ExitedWithCode(7), "Stepped does not start; choose another device");
}

TEST(BufferedPlay, StoppedEarlyDropsTheQueuedBlocks)
{
    support::TemporaryFolder folder;
    const kvx::Playlist playlist = writeNoise(folder, 2, 30);
    kvx::Library loaded(library());
    {
        SteppedDevice device;
        const KVXDeviceInfo info = makeDefault(device);
        kvx::BufferedPlayer playback(loaded.host(), playlist[0], 1.0f);
        playback.start(info);
        device.step(44100);
        EXPECT_TRUE(playback.advance());
        EXPECT_EQ(playback.position(), 44100.0);
        playback.stop();
        EXPECT_EQ(KVXPlatformStep(device.id(), 512), 0u) << "the device is stopped";
        EXPECT_FALSE(playback.hadGap());
    }
    EXPECT_EQ(loaded.leaks(), "");
}

// A pause, a seek and another gain drop the queue; the sound continues at the frame of the position.
TEST(BufferedPlay, ContinuesAtThePositionAfterAStop)
{
    support::TemporaryFolder folder;
    const kvx::Playlist playlist = writeNoise(folder, 2, 6);
    const std::vector<float> sound = support::readSound(folder / "a.wav").samples;
    kvx::Library loaded(library());
    {
        SteppedDevice device;
        const KVXDeviceInfo info = makeDefault(device);
        kvx::BufferedPlayer playback(loaded.host(), playlist[0], 1.0f);
        const auto expectOutput = [&](std::uint32_t frames, std::size_t from, float gain) {
            playback.start(info);
            EXPECT_TRUE(playback.isPlaying());
            device.clearOutput();
            EXPECT_EQ(device.step(frames), frames);
            std::vector<float> part;
            for (std::size_t i = from * 2; i < (from + frames) * 2; ++i) part.push_back(sound[i] * gain);
            EXPECT_EQ(device.output() == part, true) << "from frame " << from;
            EXPECT_TRUE(playback.advance());
            playback.stop();
            EXPECT_FALSE(playback.isPlaying());
            EXPECT_EQ(playback.position(), double(from + frames)) << "the position stays";
            EXPECT_TRUE(playback.advance()) << "a pause is not the end";
        };
        expectOutput(1000, 0, 1);
        expectOutput(700, 1000, 1);
        playback.setGain(0.5f);
        expectOutput(512, 1700, 0.5f);
        playback.seek(44100 * 5);
        EXPECT_EQ(playback.position(), 44100.0 * 5);
        expectOutput(512, 44100 * 5, 0.5f);
        playback.seek(100);
        expectOutput(512, 100, 0.5f);
        playback.seek(44100 * 6);
        playback.start(info);
        device.step(512);
        EXPECT_FALSE(playback.advance()) << "the end of the group";
        EXPECT_FALSE(playback.hadGap());
    }
    EXPECT_EQ(loaded.leaks(), "");
}

TEST(BufferedPlay, ReportsAGapAfterAnUnderflow)
{
    support::TemporaryFolder folder;
    const kvx::Playlist playlist = writeNoise(folder, 1, 30);
    kvx::Library loaded(library());
    SteppedDevice device;
    const KVXDeviceInfo info = makeDefault(device);
    kvx::BufferedPlayer playback(loaded.host(), playlist[0], 1.0f);
    playback.start(info);
    device.step(44100 * 25); // render more than all queued blocks
    EXPECT_TRUE(playback.advance());
    EXPECT_TRUE(playback.hadGap());
}

TEST(LeakReport, PrintsLiveObjectsAndReturnsAFailure)
{
    kvx::Library loaded(library());
    EXPECT_EQ(kvx::reportLeaks(loaded, 0), 0);
    EXPECT_EQ(kvx::reportLeaks(loaded, 130), 130);
    (void)loaded.host().create(playerClass).detach();
    (void)host::String::of("lost").detach();
    testing::internal::CaptureStderr();
    EXPECT_EQ(kvx::reportLeaks(loaded, 0), 1);
    EXPECT_EQ(kvx::reportLeaks(loaded, 130), 130) << "a former failure keeps its exit code";
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_NE(report.find("1 object of class CoreAudioPlayerKVX"), std::string::npos) << report;
    EXPECT_NE(report.find("1 string"), std::string::npos) << report;
}

} // namespace
