// An hour of sound, loaded in the background: meanwhile the host's program goes on. On a system that is
// older, too, where the library has a thread of its own for it, and another unit for time and pitch.
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

std::atomic<int> detaches{0}; // by the library

bool isLibrary(const void* code)
{
    Dl_info info = {};
    return dladdr(code, &info) && info.dli_fname && std::strstr(info.dli_fname, "KVXAudio.so");
}

} // namespace

// This program's name stands in front of the C library's. Only the library's thread is detached after a join,
// for which the thread sanitizer would end the program.
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
using Clock = std::chrono::steady_clock;

constexpr const char* mark = "KVX_TEST_ON_OLDER";
bool isOlder() { return std::getenv(mark); }

constexpr int rate = 8000;
constexpr std::size_t hour = std::size_t(rate) * 3600;

/// Every frame of the hour tells where it stands, as far as 16 bits can.
short sampleOf(std::size_t frame) { return short(frame * 40503u >> 3); }

void writeAnHour(const std::string& path)
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

TEST(FilePlayerBackground, TheProgramGoesOnWhileAnHourLoads)
{
    const support::TemporaryFolder folder;
    writeAnHour(folder / "hour.wav");
    LoadedHost loaded;
    {
        // The program: it lets events through, has a timer of 5 ms, and looks at the player.
        const AudioObjects audio(loaded.host);
        const auto at = overall(kAudioHardwarePropertySleepingIsAllowed);
        const EventCount changes(loaded.host, kAudioObjectSystemObject, at);
        const host::Object player = loaded.host.create(filePlayerClass);
        const int before = detaches;
        int yields = 0, timerEvents = 0, eventsMeanwhile = 0;
        auto due = Clock::now() + std::chrono::milliseconds(5);
        loaded.host.onYield([&] {
            ++yields;
            KVXPlatformDrainMainQueue(0);
            eventsMeanwhile = changes.count();
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
        if (!isOlder()) EXPECT_GT(eventsMeanwhile, 0) << "of what the timer changed";
        EXPECT_EQ(detaches - before, isOlder() ? 1 : 0) << "whose thread it was";

        EXPECT_EQ(player.get("Lasterror").integer(), 0);
        EXPECT_EQ(player.get("TrackLength").number(), 3600.0);
        EXPECT_EQ(player.get("SampleRate").number(), double(rate));
        SteppedDevice device(rate, 1);
        player.set("CurrentDeviceID", std::int64_t(device.id()));
        player.call("Play");
        for (const std::size_t from : {std::size_t(0), hour / 2, hour - 1000}) {
            SCOPED_TRACE(from);
            player.set("CurrentTime", double(from) / rate);
            device.forget();
            device.step(1000);
            ASSERT_EQ(device.heard().size(), 1000u);
            for (std::size_t i = 0; i < 1000; ++i)
                ASSERT_EQ(device.heard()[i], float(sampleOf(from + i)) / 32768) << i;
        }
        EXPECT_EQ(player.get("CurrentTime").number(), 3600.0);
    }
    EXPECT_EQ(leftOver(loaded.host), "");
    EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
}

// What a program's event throws does not end the load, which has the program's memory in hand.
TEST(FilePlayerBackground, AnExceptionInTheProgramWaitsForTheLoad)
{
    const support::TemporaryFolder folder;
    const support::Sound sound = support::makeNoise(44100, 2, 44100);
    support::writeSound(sound, folder / "x.wav");
    LoadedHost loaded;
    {
        const host::Object player = loaded.host.create(filePlayerClass);
        loaded.host.onYield([] { throw std::runtime_error("the program's own"); });
        EXPECT_ANY_THROW(player.call("LoadFileMT", host::FolderItem::at(folder / "x.wav"), 2, 2));
        loaded.host.onYield({});
        EXPECT_EQ(player.call("Data").memoryBlock().size(), sound.samples.size() * sizeof(float));
        EXPECT_EQ(player.get("SampleRate").number(), 44100.0);
    }
    EXPECT_EQ(leftOver(loaded.host), "");
}

TEST(FilePlayerBackground, ManyLoadsOneAfterTheOther)
{
    const support::TemporaryFolder folder;
    const support::Sound sound = support::makeNoise(44100, 2, 1000);
    support::writeSound(sound, folder / "x.wav");
    LoadedHost loaded;
    {
        SteppedDevice device(44100, 2);
        const int before = detaches;
        for (int round = 0; round < 30; ++round) {
            const host::Object player = loaded.host.create(filePlayerClass);
            ASSERT_TRUE(player.call("LoadFileMT", host::FolderItem::at(folder / "x.wav"), 2, 2).boolean());
            player.set("CurrentDeviceID", std::int64_t(device.id()));
            player.call("Play");
            device.forget();
            device.step(1500);
            expectThenSilence(device.heard(), sound.samples);
        }
        EXPECT_EQ(detaches - before, isOlder() ? 30 : 0);
    }
    EXPECT_EQ(leftOver(loaded.host), "");
}

// One player loads another's file from within the yield of its own load.
TEST(FilePlayerBackground, OneLoadInsideAnother)
{
    const support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 441000), folder / "x.wav");
    LoadedHost loaded;
    {
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
    EXPECT_EQ(leftOver(loaded.host), "");
}

TEST(FilePlayerBackground, TheUnitForTimeAndPitchIsTheSystemsOwn)
{
    const support::TemporaryFolder folder;
    support::writeSound(makeTone(44100, 1, 2, 440), folder / "tone.wav");
    LoadedHost loaded;
    const struct {
        double rate, cents, hertz, seconds;
    } facts[] = {{1, 0, 440, 2}, {0.75, 0, 440, 2 / 0.75}, {1.5, 0, 440, 2 / 1.5}, {1, 1200, 880, 2}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << "rate " << fact.rate << ", cents " << fact.cents);
        FilePlayer player(loaded, folder / "tone.wav");
        EXPECT_EQ(player.get("Overlap"), isOlder() ? 0 : 8);
        EXPECT_EQ(player.error(), isOlder() ? kAudioUnitErr_InvalidParameter : 0)
            << "the older unit has no such parameter";
        player.set("PitchRate", fact.cents);
        player.set("TimeRate", fact.rate);
        EXPECT_EQ(player.error(), 0);
        player.play();
        const auto frames = std::size_t(fact.seconds * 44100);
        const Samples heard = player.hear(frames + 22050);
        EXPECT_NEAR(double(framesAbove(heard, 0.1f)), double(frames), 0.01 * double(frames));
        EXPECT_NEAR(frequencyOf(partOf(heard, 1, frames / 4, frames / 2), 44100), fact.hertz,
                    0.005 * fact.hertz);
    }
    EXPECT_EQ(leftOver(loaded.host), "");
}

TEST(FilePlayerOnAnOlderSystem, AllOfThisHoldsThere)
{
    const support::ChildResult child =
        support::runChild({"/proc/self/exe", "--gtest_filter=FilePlayerBackground.*"},
                          {{"LD_LIBRARY_PATH", KVX_BINARY_DIR "/older"}, {mark, "1"}});
    EXPECT_EQ(child.exitCode, 0) << child.out << child.err;
    EXPECT_NE(child.out.find("[  PASSED  ] 5 tests"), std::string::npos) << child.out;
}

} // namespace
