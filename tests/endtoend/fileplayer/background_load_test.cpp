// Loads of the file player on a background thread: the program runs on, and the loaded samples are exact. All
// tests run on the current platform, and on an older platform without dispatch_async and the newer time-pitch
// unit.
#include "tests/endtoend/audio_objects.h"
#include "tests/endtoend/fileplayer/file_player.h"
#include "tests/support/child_process.h"
#include "tests/support/sanitizers.h"

#include <AudioUnit/AudioUnit.h>
#include <sndfile.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>

namespace {

std::atomic<int> detaches{0}; // number of calls of pthread_detach that the library has made

bool isLibrary(const void* code)
{
    Dl_info info = {};
    return dladdr(code, &info) && info.dli_fname && std::strstr(info.dli_fname, "KVXAudio.so");
}

} // namespace

// Replaces pthread_detach, because the library detaches its background thread after joining it, which is an
// error for the thread sanitizer.
extern "C" {
int __interceptor_pthread_detach(pthread_t) __attribute__((weak));

__attribute__((visibility("default"))) int pthread_detach(pthread_t thread)
{
    if (isLibrary(__builtin_return_address(0))) {
        ++detaches;
        if (support::hasThreadSanitizer) return 0;
    }
    if (__interceptor_pthread_detach) return __interceptor_pthread_detach(thread);
    static const auto real = reinterpret_cast<int (*)(pthread_t)>(dlsym(RTLD_NEXT, "pthread_detach"));
    return real(thread);
}
}

namespace {

using namespace endtoend;

using FilePlayerBackgroundLoad = FilePlayerTest;
using Clock = std::chrono::steady_clock;

// Name of an environment variable that is set in the child process that tests the older platform.
constexpr const char* olderVariable = "KVX_TEST_ON_OLDER";
bool isOlder() { return std::getenv(olderVariable); }

constexpr int rate = 8000;
constexpr std::size_t hour = std::size_t(rate) * 3600;

/// Return the sample of a frame. Neighbouring frames differ, so that misplaced frames show.
short sampleOf(std::size_t frame) { return short(frame * 40503u >> 3); }

void writeHour(const std::string& path)
{
    SF_INFO info = {};
    info.samplerate = rate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_TRUE(file);
    std::vector<short> block(rate * 60);
    for (std::size_t done = 0; done < hour; done += block.size()) {
        for (std::size_t i = 0; i < block.size(); ++i) block[i] = sampleOf(done + i);
        ASSERT_EQ(sf_write_short(file, block.data(), sf_count_t(block.size())), sf_count_t(block.size()));
    }
    sf_close(file);
}

TEST_F(FilePlayerBackgroundLoad, ProgramRunsWhileAnHourLoads)
{
    writeHour(folder / "hour.wav");
    // During the load the program handles events, runs a timer every 5 ms, and reads properties of the
    // player.
    const AudioObjects audio(loaded.host);
    const auto at = overall(kAudioHardwarePropertySleepingIsAllowed);
    const EventCount changes(loaded.host, kAudioObjectSystemObject, at);
    const host::Object player = loaded.host.create(filePlayerClass);
    const int before = detaches;
    int yields = 0, timerEvents = 0, eventsDuringLoad = 0;
    auto due = Clock::now() + std::chrono::milliseconds(5);
    loaded.host.onYield([&] {
        ++yields;
        KVXPlatformDrainMainQueue(0);
        eventsDuringLoad = changes.count();
        if (Clock::now() < due) return;
        due += std::chrono::milliseconds(5);
        ++timerEvents;
        audio.set(kAudioObjectSystemObject, at, UInt32(timerEvents % 2));
        EXPECT_EQ(player.get("CurrentTime").number(), 0.0);
        EXPECT_FALSE(player.get("Looping").boolean());
    });
    EXPECT_TRUE(player.call("LoadFileMT", host::FolderItem::at(folder / "hour.wav"), 1, 1).boolean());
    loaded.host.onYield({});
    EXPECT_GT(yields, 10);
    EXPECT_GT(timerEvents, 1);
    if (!isOlder()) EXPECT_GT(eventsDuringLoad, 0) << "events of the changes by the timer";
    EXPECT_EQ(detaches - before, isOlder() ? 1 : 0)
        << "only the older platform needs a thread of the library";

    EXPECT_EQ(player.get("Lasterror").integer(), 0);
    EXPECT_EQ(player.get("TrackLength").number(), 3600.0);
    EXPECT_EQ(player.get("SampleRate").number(), double(rate));
    SteppedDevice device(rate, 1);
    player.set("CurrentDeviceID", std::int64_t(device.id()));
    player.call("Play");
    for (const std::size_t from : {std::size_t(0), hour / 2, hour - 1000}) {
        SCOPED_TRACE(from);
        player.set("CurrentTime", double(from) / rate);
        device.clearOutput();
        device.step(1000);
        ASSERT_EQ(device.output().size(), 1000u);
        for (std::size_t i = 0; i < 1000; ++i)
            ASSERT_EQ(device.output()[i], float(sampleOf(from + i)) / 32768) << i;
    }
    EXPECT_EQ(player.get("CurrentTime").number(), 3600.0);
}

// The load is complete before the exception continues, because the worker writes to memory of the player.
TEST_F(FilePlayerBackgroundLoad, ExceptionOfTheProgramWaitsForTheLoad)
{
    const support::Sound sound = support::makeNoise(44100, 2, 44100);
    support::writeSound(sound, folder / "x.wav");
    const host::Object player = loaded.host.create(filePlayerClass);
    loaded.host.onYield([] { throw std::runtime_error("by the program"); });
    EXPECT_ANY_THROW(player.call("LoadFileMT", host::FolderItem::at(folder / "x.wav"), 2, 2));
    loaded.host.onYield({});
    EXPECT_EQ(player.call("Data").memoryBlock().size(), sound.samples.size() * sizeof(float));
    EXPECT_EQ(player.get("SampleRate").number(), 44100.0);
}

TEST_F(FilePlayerBackgroundLoad, SuccessiveLoadsPlayExactly)
{
    const support::Sound sound = support::makeNoise(44100, 2, 1000);
    support::writeSound(sound, folder / "x.wav");
    SteppedDevice device(44100, 2);
    const int before = detaches;
    for (int round = 0; round < 30; ++round) {
        const host::Object player = loaded.host.create(filePlayerClass);
        ASSERT_TRUE(player.call("LoadFileMT", host::FolderItem::at(folder / "x.wav"), 2, 2).boolean());
        player.set("CurrentDeviceID", std::int64_t(device.id()));
        player.call("Play");
        device.clearOutput();
        device.step(1500);
        expectThenSilence(device.output(), sound.samples);
    }
    EXPECT_EQ(detaches - before, isOlder() ? 30 : 0);
}

// The second load starts while the first load yields to the program.
TEST_F(FilePlayerBackgroundLoad, NestedLoadsBothComplete)
{
    support::writeSound(support::makeNoise(44100, 2, 441000), folder / "x.wav");
    const host::Object outer = loaded.host.create(filePlayerClass);
    const host::Object inner = loaded.host.create(filePlayerClass);
    bool isInnerLoaded = false, isNested = false;
    loaded.host.onYield([&] {
        if (isNested) return;
        isNested = true;
        isInnerLoaded = inner.call("LoadFileMT", host::FolderItem::at(folder / "x.wav"), 2, 2).boolean();
    });
    EXPECT_TRUE(outer.call("LoadFileMT", host::FolderItem::at(folder / "x.wav"), 2, 2).boolean());
    loaded.host.onYield({});
    EXPECT_TRUE(isInnerLoaded);
    EXPECT_EQ(outer.call("Data").memoryBlock().bytes(), inner.call("Data").memoryBlock().bytes());
}

TEST_F(FilePlayerBackgroundLoad, TimePitchUnitOfThePlatformSetsDurationAndPitch)
{
    support::writeSound(makeTone(44100, 1, 2, 440), folder / "tone.wav");
    const struct {
        double rate, cents, hertz, seconds;
    } facts[] = {{1, 0, 440, 2}, {0.75, 0, 440, 2 / 0.75}, {1.5, 0, 440, 2 / 1.5}, {1, 1200, 880, 2}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << "rate " << fact.rate << ", cents " << fact.cents);
        FilePlayer player(loaded, folder / "tone.wav");
        EXPECT_EQ(player.get("Overlap"), isOlder() ? 0 : 8);
        EXPECT_EQ(player.error(), isOlder() ? kAudioUnitErr_InvalidParameter : 0)
            << "the older unit has no overlap parameter";
        player.set("PitchRate", fact.cents);
        player.set("TimeRate", fact.rate);
        EXPECT_EQ(player.error(), 0);
        player.play();
        const auto frames = std::size_t(fact.seconds * 44100);
        const Samples rendered = player.render(frames + 22050);
        EXPECT_NEAR(double(framesAbove(rendered, 0.1f)), double(frames), 0.01 * double(frames));
        EXPECT_NEAR(frequencyOf(partOf(rendered, 1, frames / 4, frames / 2), 44100), fact.hertz,
                    0.005 * fact.hertz);
    }
}

TEST(FilePlayerOnOlderPlatform, PassesAllBackgroundLoadTests)
{
    const support::ChildResult child =
        support::runChild({"/proc/self/exe", "--gtest_filter=FilePlayerBackgroundLoad.*"},
                          {{"LD_LIBRARY_PATH", KVX_BINARY_DIR "/older"}, {olderVariable, "1"}});
    EXPECT_EQ(child.exitCode, 0) << child.out << child.err;
    EXPECT_NE(child.out.find("[  PASSED  ] 5 tests"), std::string::npos) << child.out;
}

} // namespace
