// Parts of `kvx play` that a whole command cannot be brought to show: a device that refuses, something left
// over.
#include "host/kvx/library/library.h"
#include "host/kvx/play/buffered_play.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
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

// The player counts as running from then on, and cannot be stopped; the command must come to its end all the
// same.
TEST(PlaybackDeathTest, OnADeviceThatRefusesEndsWithAMessage)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 44100), folder / "a.wav");
    const kvx::Playlist playlist = kvx::planPlaylist({folder / "a.wav"});
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

TEST(Playback, StoppedEarlyDropsTheRest)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 44100 * 30), folder / "a.wav");
    const kvx::Playlist playlist = kvx::planPlaylist({folder / "a.wav"});
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
        EXPECT_EQ(KVXPlatformStep(device.id(), 512), 0u) << "nobody is started";
        EXPECT_FALSE(playback.hadGap());
    }
    EXPECT_EQ(loaded.leaks(), "");
}

// A reader that is too slow: the device runs dry, and the player says so afterwards.
TEST(Playback, ThatRanDryHadAGap)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 1, 44100 * 30), folder / "a.wav");
    const kvx::Playlist playlist = kvx::planPlaylist({folder / "a.wav"});
    kvx::Library loaded(library());
    SteppedDevice device;
    const KVXDeviceInfo info = makeDefault(device);
    kvx::BufferedPlayer playback(loaded.host(), playlist[0], 1.0f);
    playback.start(info);
    device.step(44100 * 25); // all that was queued ahead, and more
    EXPECT_TRUE(playback.advance());
    EXPECT_TRUE(playback.hadGap());
}

TEST(LeftOver, IsToldAndIsAFailure)
{
    kvx::Library loaded(library());
    EXPECT_EQ(kvx::reportLeaks(loaded, 0), 0);
    EXPECT_EQ(kvx::reportLeaks(loaded, 130), 130);
    (void)loaded.host().create(playerClass).detach();
    (void)host::String::of("lost").detach();
    testing::internal::CaptureStderr();
    EXPECT_EQ(kvx::reportLeaks(loaded, 0), 1);
    EXPECT_EQ(kvx::reportLeaks(loaded, 130), 130) << "a failure of its own comes first";
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("1 object of class CoreAudioPlayerKVX"), std::string::npos) << said;
    EXPECT_NE(said.find("1 string"), std::string::npos) << said;
}

TEST(Interrupts, AreNotedAndGiveTheShellsExitCode)
{
    const struct {
        int signal, exitCode;
    } facts[] = {{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}};
    for (const auto& fact : facts) {
        kvx::InterruptGuard guard;
        EXPECT_FALSE(kvx::isInterrupted());
        EXPECT_EQ(kvx::interruptExitCode(), 0);
        std::raise(fact.signal);
        EXPECT_EQ(kvx::isInterrupted(), fact.exitCode != 0);
        EXPECT_EQ(kvx::interruptExitCode(), fact.exitCode);
    }
}

} // namespace
