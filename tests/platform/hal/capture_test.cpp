// Captures of a device in WAV files.
#include "tests/platform/hal/test_device.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <Carbon/Carbon.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <sys/resource.h>

namespace {

using namespace haltest;
using support::readSound;
using support::Sound;

/// A procedure body that fills its output with noise, some of which exceeds full scale.
Procedure::Body noise()
{
    return [random = std::mt19937(7)](const Call& call) mutable {
        std::uniform_real_distribution<float> samples(-4, 4);
        for (UInt32 i = 0; i < call.samples(); ++i) call.data()[i] = samples(random);
    };
}

TEST(Capture, EqualsTheOutput)
{
    // The last capture has more samples than the ring buffer, which a stepped device does not use.
    const struct {
        double rate;
        uint32_t channels, slice, frames;
    } facts[] = {
        {44100, 2, 64, 1},      {44100, 1, 64, 1000},  {48000, 2, 512, 100003},
        {96000, 6, 100, 54321}, {8000, 1, 4096, 8000}, {44100, 2, 512, 2000000},
    };
    support::TemporaryFolder folder;
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.channels) + " channels, " + std::to_string(fact.frames) + " frames");
        KVXSimulatedDevice description = Device::stepped();
        description.sampleRate = fact.rate;
        description.outputChannels = fact.channels;
        description.sliceFrames = fact.slice;
        Device device(description);
        Procedure procedure(device, noise());
        Recording recording(device);
        const std::string path = folder / (std::to_string(fact.frames) + ".wav");
        ASSERT_EQ(KVXPlatformStartCapture(device, path.c_str()), 0) << KVXPlatformErrorText();
        procedure.start();
        ASSERT_EQ(KVXPlatformStep(device, fact.frames), fact.frames);
        EXPECT_FALSE(std::filesystem::exists(path)) << "an incomplete file has another name";
        ASSERT_EQ(KVXPlatformStopCapture(device), 0) << KVXPlatformErrorText();
        const Sound sound = readSound(path);
        EXPECT_EQ(sound.sampleRate, static_cast<int>(fact.rate));
        EXPECT_EQ(sound.channels, static_cast<int>(fact.channels));
        ASSERT_EQ(sound.samples.size(), recording.samples.size());
        EXPECT_EQ(std::memcmp(sound.samples.data(), recording.samples.data(), recording.samples.size() * 4),
                  0);
        std::filesystem::remove(path);
        EXPECT_EQ(folder.count(), 0u) << "no other file is left";
    }
}

TEST(Capture, KeepsEverySampleOfAPacedDevice)
{
    support::TemporaryFolder folder;
    Device device(Device::paced());
    Procedure* self = nullptr;
    std::atomic<bool> isDone{false};
    float next = 0;
    Procedure procedure(device, [&](const Call& call) {
        for (UInt32 i = 0; i < call.samples(); ++i) call.data()[i] = next++;
        if (self->calls() == 100) {
            self->stop();
            isDone = true;
        }
    });
    self = &procedure;
    const std::string path = folder / "paced.wav";
    ASSERT_EQ(KVXPlatformStartCapture(device, path.c_str()), 0);
    procedure.start();
    waitFor([&] { return isDone.load(); });
    ASSERT_EQ(KVXPlatformStopCapture(device), 0) << KVXPlatformErrorText();
    const Sound sound = readSound(path);
    ASSERT_EQ(sound.frames(), 100u * 64);
    for (std::size_t i = 0; i < sound.samples.size(); ++i) ASSERT_EQ(sound.samples[i], static_cast<float>(i));
}

TEST(Capture, StartsAndStopsWhileTheDevicePlays)
{
    support::TemporaryFolder folder;
    Device device;
    float next = 0;
    Procedure procedure(device, [&](const Call& call) { call.fill(next++); });
    procedure.start();
    KVXPlatformStep(device, 64);
    for (int i = 1; i <= 3; ++i) {
        const std::string path = folder / (std::to_string(i) + ".wav");
        ASSERT_EQ(KVXPlatformStartCapture(device, path.c_str()), 0);
        KVXPlatformStep(device, 64);
        ASSERT_EQ(KVXPlatformStopCapture(device), 0);
        EXPECT_EQ(readSound(path).samples, std::vector<float>(128, static_cast<float>(i)));
    }
    KVXPlatformStep(device, 64);
    EXPECT_EQ(KVXPlatformStopCapture(device), 0) << "nothing to finish is not an error";
    EXPECT_EQ(folder.count(), 3u);
}

TEST(Capture, SecondStartFinishesTheFirstFile)
{
    support::TemporaryFolder folder;
    Device device;
    Procedure procedure(device, [](const Call& call) { call.fill(0.5f); });
    procedure.start();
    ASSERT_EQ(KVXPlatformStartCapture(device, (folder / "a.wav").c_str()), 0);
    KVXPlatformStep(device, 10);
    ASSERT_EQ(KVXPlatformStartCapture(device, (folder / "b.wav").c_str()), 0);
    EXPECT_EQ(readSound(folder / "a.wav").frames(), 10u);
    KVXPlatformStep(device, 20);
    ASSERT_EQ(KVXPlatformStopCapture(device), 0);
    EXPECT_EQ(readSound(folder / "b.wav").frames(), 20u);
}

TEST(Capture, IsFinishedWhenTheDeviceEnds)
{
    support::TemporaryFolder folder;
    for (bool isUnplugged : {false, true}) {
        const std::string path = folder / (isUnplugged ? "unplugged.wav" : "dead.wav");
        Device device;
        Procedure procedure(device, [](const Call& call) { call.fill(0.5f); });
        ASSERT_EQ(KVXPlatformStartCapture(device, path.c_str()), 0);
        procedure.start();
        KVXPlatformStep(device, 100);
        const KVXDeviceID id = static_cast<KVXDeviceID>(AudioDeviceID{device});
        ASSERT_EQ(isUnplugged ? KVXPlatformRemoveSimulatedDevice(id) : KVXPlatformKillDevice(id), 0);
        EXPECT_EQ(readSound(path).frames(), 100u);
        EXPECT_EQ(KVXPlatformStopCapture(id), 0);
    }
}

TEST(Capture, StartFailsWithoutAWritableFile)
{
    support::TemporaryFolder folder;
    std::ofstream(folder / "file") << "text";
    Device device;
    for (const std::string& path :
         {folder / "no such folder/x.wav", folder / "file/x.wav", std::string(), folder.path()}) {
        EXPECT_NE(KVXPlatformStartCapture(device, path.c_str()), 0) << path;
        EXPECT_STRNE(KVXPlatformErrorText(), "") << path;
    }
    EXPECT_NE(KVXPlatformStartCapture(device, nullptr), 0);
    EXPECT_EQ(folder.count(), 1u) << "no other file is left";
}

TEST(Capture, KeepsAForeignFileWithTheTemporaryName)
{
    support::TemporaryFolder folder;
    std::ofstream(folder / "x.wav.part") << "foreign";
    Device device;
    EXPECT_NE(KVXPlatformStartCapture(device, (folder / "x.wav").c_str()), 0);
    EXPECT_NE(std::string(KVXPlatformErrorText()).find("x.wav.part is in the way; remove it"),
              std::string::npos)
        << KVXPlatformErrorText();
    EXPECT_EQ(std::filesystem::file_size(folder / "x.wav.part"), 7u);
    EXPECT_EQ(folder.count(), 1u);
}

TEST(Capture, KeepsTheOldFileUntilTheNewOneIsComplete)
{
    support::TemporaryFolder folder;
    const std::string path = folder / "old.wav";
    std::ofstream(path) << "old";
    Device device;
    Procedure procedure(device, [](const Call& call) { call.fill(0.5f); });
    procedure.start();
    ASSERT_EQ(KVXPlatformStartCapture(device, path.c_str()), 0);
    KVXPlatformStep(device, 100);
    EXPECT_EQ(std::filesystem::file_size(path), 3u);
    ASSERT_EQ(KVXPlatformStopCapture(device), 0);
    EXPECT_EQ(readSound(path).frames(), 100u);
}

[[noreturn]] void playUntilTheProcessEnds()
{
    const AudioDeviceID device = defaultOutput();
    KVXPlatformSetStepped(static_cast<KVXDeviceID>(device), 1);
    auto& procedure = *new Procedure(device, [](const Call& call) { call.fill(0.25f); });
    procedure.start();
    Delay(6, nullptr);
    std::exit(0);
}

// The library reads the environment once, at its first use. So the device plays in a child process, which
// runs the test program again from its start.
TEST(CaptureDeathTest, EnvironmentCaptureIsFinishedAtProcessEnd)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::optional<support::TemporaryFolder> folder;
    if (!std::getenv("KVX_AUDIO_CAPTURE")) {
        folder.emplace();
        setenv("KVX_AUDIO_CAPTURE", (*folder / "environment.wav").c_str(), 1);
    }
    EXPECT_EXIT(playUntilTheProcessEnds(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(readSound(*folder / "environment.wav").samples, std::vector<float>(4410 * 2, 0.25f));
    EXPECT_EQ(folder->count(), 1u);
    unsetenv("KVX_AUDIO_CAPTURE");
}

TEST(CaptureDeathTest, EnvironmentCaptureReportsAnUnwritablePath)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("KVX_AUDIO_CAPTURE", "/no such folder/x.wav", 1);
    EXPECT_EXIT(playUntilTheProcessEnds(), testing::ExitedWithCode(0), "/no such folder/x.wav");
    unsetenv("KVX_AUDIO_CAPTURE");
}

// ---- two captures, and incomplete files ----

TEST(Capture, EndsWhenTheRateOrTheChannelsChange)
{
    const struct {
        double rate;
        uint32_t channels;
    } facts[] = {{48000, 0}, {0, 1}};
    support::TemporaryFolder folder;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.rate);
        const std::string path = folder / (std::to_string(fact.channels) + ".wav");
        Device device;
        Procedure procedure(device, [](const Call& call) { call.fill(0.5f); });
        procedure.start();
        ASSERT_EQ(KVXPlatformStartCapture(device, path.c_str()), 0);
        KVXPlatformStep(device, 100);
        ASSERT_EQ(KVXPlatformConfigureDevice(device, fact.rate, fact.channels, 0), 0);
        KVXPlatformStep(device, 100);
        ASSERT_EQ(KVXPlatformConfigureDevice(device, 44100, 2, 0), 0);
        KVXPlatformStep(device, 100);
        EXPECT_NE(KVXPlatformStopCapture(device), 0);
        EXPECT_NE(std::string(KVXPlatformErrorText()).find("changed"), std::string::npos);
        EXPECT_EQ(readSound(path).frames(), 100u);
    }
}

TEST(Capture, OpenedDuringAChangeStartsWithTheFirstSliceOfItsForm)
{
    support::TemporaryFolder folder;
    Device device;
    Procedure procedure(device, [](const Call& call) { call.fill(0.5f); });
    procedure.start();
    ASSERT_EQ(KVXPlatformStartCapture(device, (folder / "x.wav").c_str()), 0);
    ASSERT_EQ(KVXPlatformConfigureDevice(device, 0, 1, 0), 0);
    KVXPlatformStep(device, 100);
    ASSERT_EQ(KVXPlatformConfigureDevice(device, 0, 2, 0), 0);
    KVXPlatformStep(device, 10);
    EXPECT_EQ(KVXPlatformStopCapture(device), 0) << KVXPlatformErrorText();
    EXPECT_EQ(readSound(folder / "x.wav").frames(), 10u);
}

[[noreturn]] void playAndCaptureUntilTheProcessEnds(const std::string& path)
{
    const AudioDeviceID device = defaultOutput();
    const auto id = static_cast<KVXDeviceID>(device);
    KVXPlatformSetStepped(id, 1);
    auto& procedure = *new Procedure(device, [](const Call& call) { call.fill(0.25f); });
    if (KVXPlatformStartCapture(id, path.c_str()) != 0) std::exit(2);
    procedure.start();
    if (KVXPlatformStartCapture(id, std::getenv("KVX_AUDIO_CAPTURE")) == 0) std::exit(4);
    if (KVXPlatformStartCapture(id, path.c_str()) != 0) std::exit(5);
    Delay(6, nullptr);
    std::exit(KVXPlatformStopCapture(id) == 0 ? 0 : 3);
}

TEST(CaptureDeathTest, EnvironmentAndProgramCapturesAreEqual)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::optional<support::TemporaryFolder> folder;
    if (!std::getenv("KVX_AUDIO_CAPTURE")) {
        folder.emplace();
        setenv("KVX_AUDIO_CAPTURE", (*folder / "environment.wav").c_str(), 1);
    }
    const std::string path = std::string(std::getenv("KVX_AUDIO_CAPTURE")) + ".program.wav";
    EXPECT_EXIT(playAndCaptureUntilTheProcessEnds(path), testing::ExitedWithCode(0), "");
    const std::vector<float> all(4410 * 2, 0.25f);
    EXPECT_EQ(readSound(*folder / "environment.wav").samples, all);
    EXPECT_EQ(readSound(path).samples, all);
    unsetenv("KVX_AUDIO_CAPTURE");
}

[[noreturn]] void playUntilTheDiskIsFull(bool deviceDies)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {20000, 20000};
    setrlimit(RLIMIT_FSIZE, &limit);
    if (!deviceDies) playUntilTheProcessEnds();
    Device device;
    set<AudioDeviceID>(kAudioObjectSystemObject, address(kAudioHardwarePropertyDefaultOutputDevice), device);
    Procedure procedure(device, [](const Call& call) { call.fill(0.25f); });
    procedure.start();
    KVXPlatformStep(device, 44100);
    KVXPlatformKillDevice(device);
    std::_Exit(0); // the error message has been written before this line
}

TEST(CaptureDeathTest, EnvironmentCaptureReportsAFullDisk)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::optional<support::TemporaryFolder> folder;
    if (!std::getenv("KVX_AUDIO_CAPTURE")) {
        folder.emplace();
        setenv("KVX_AUDIO_CAPTURE", (*folder / "environment.wav").c_str(), 1);
    }
    for (bool deviceDies : {false, true})
        EXPECT_EXIT(
            playUntilTheDiskIsFull(deviceDies), testing::ExitedWithCode(0),
            "KVX_AUDIO_CAPTURE: .*environment.wav cannot be finished: File too large; .*raise the limit");
    EXPECT_EQ(folder->count(), 0u) << "no incomplete file is left";
    unsetenv("KVX_AUDIO_CAPTURE");
}

} // namespace
