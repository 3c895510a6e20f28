// Random commands to a playing file player: all output samples are finite, nothing leaks, and the audio
// thread allocates nothing. Each test plays 20 seconds; KVX_LONG_RUN_SECONDS changes the length,
// KVX_WALK_SEED the random sequence.
#include "tests/endtoend/fileplayer/file_player.h"
#include "tests/support/allocator_hook.h"

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <sndfile.h>
#include <thread>

namespace {

using namespace endtoend;

double numberOf(const char* name, double fallback)
{
    const char* const text = std::getenv(name);
    return text ? std::atof(text) : fallback;
}

/// A stepped device that checks that the rendered samples are finite, and does not keep them.
class CheckedDevice {
public:
    CheckedDevice(double rate, std::uint32_t channels, std::uint32_t slice)
        : device_(rate, channels, slice), rate_(rate)
    {
        KVXPlatformSetOutputTap(device_.id(), check, this);
    }
    KVXDeviceID id() const { return device_.id(); }

    /// Run I/O cycles while the allocator hook counts allocations.
    /// Returns  the rendered seconds.
    double step(std::uint32_t frames)
    {
        allocator_hook::watchThisThread(true);
        const std::uint32_t played = KVXPlatformStep(device_.id(), frames);
        allocator_hook::watchThisThread(false);
        return played / rate_;
    }
    bool hasInvalidSamples() const { return hasInvalidSamples_; }
    bool hasSound() const { return hasSound_; }

private:
    static void check(void* self, const float* samples, std::uint32_t frames, std::uint32_t channels)
    {
        auto& device = *static_cast<CheckedDevice*>(self);
        for (std::size_t i = 0; i < std::size_t(frames) * channels; ++i) {
            if (!std::isfinite(samples[i]) || std::fabs(samples[i]) > 1e4f) device.hasInvalidSamples_ = true;
            if (samples[i] != 0) device.hasSound_ = true;
        }
    }

    SteppedDevice device_;
    double rate_;
    std::atomic<bool> hasInvalidSamples_{false}, hasSound_{false};
};

class Walk {
public:
    Walk() : random_(unsigned(numberOf("KVX_WALK_SEED", 1)))
    {
        support::writeSound(support::makeSweep(44100, 2, std::size_t(length * 44100)), folder_ / "x.flac",
                            SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
        player_ = loadFile(loaded_.host, folder_ / "x.flac", 2);
        player_.set("CurrentDeviceID", std::int64_t(devices[0].id()));
        player_.call("Play");
    }

    /// Give one random command to the player.
    void step()
    {
        const auto set = [this](const char* property, double value) { player_.set(property, value); };
        switch (below(20)) {
        case 0:
            return set("CurrentTime", between(-0.1, length + 0.1));
        case 1:
            return set("LoopIn", between(0, length));
        case 2:
            return set("LoopOut", between(0, length * 1.2));
        case 3:
            return player_.set("Looping", below(2) == 0);
        case 4:
            return set("TimeRate", below(2) ? 1 : between(0.5, 2.5));
        case 5:
            return set("PitchRate", below(2) ? 0 : between(-1300, 1300));
        case 6:
            return set("Overlap", below(3) ? 8 : 3);
        case 7:
            return player_.set("EnablePeakLocking", below(2) == 0);
        case 8:
            return set("OutputVolume", between(0, 1.2));
        case 9:
            return set("Pan", between(-1, 1));
        case 10:
            return player_.set("InputVolume", 0, between(0, 1.2));
        case 11:
            return player_.set("InputEnabled", 0, below(4) != 0);
        case 12:
            return changeBands();
        case 13:
            return player_.set("TimePitchUnit", below(4));
        case 14:
            return player_.set("CurrentDeviceID", std::int64_t(devices[below(3)].id()));
        case 15:
            return changeMap();
        case 16:
            return player_.set("Playing", below(3) != 0);
        case 17:
            player_.call("Reset");
            return;
        case 18:
            KVXPlatformConfigureDevice(devices[below(3)].id(), 0, 0, 32u << below(7));
            return;
        default:
            for (const char* property :
                 {"MeterLevel", "CurrentTime", "Playing", "TimeRate", "CurrentDeviceID"})
                player_.get(property);
        }
    }
    void play() { player_.call("Play"); }

    double seconds() const { return numberOf("KVX_LONG_RUN_SECONDS", 20); }
    unsigned below(unsigned limit) { return random_() % limit; }

    void check()
    {
        EXPECT_EQ(count.heapCalls(), 0) << "allocations and frees on the audio thread";
        bool hasSound = false;
        for (const CheckedDevice& device : devices) {
            EXPECT_FALSE(device.hasInvalidSamples());
            hasSound = hasSound || device.hasSound();
        }
        EXPECT_TRUE(hasSound);
        player_ = nullptr;
        expectCleanHost(loaded_.host);
    }

    CheckedDevice devices[3] = {{44100, 2, 512}, {48000, 4, 300}, {22050, 1, 64}};
    const allocator_hook::Count count;

private:
    static constexpr double length = 4; // seconds

    double between(double least, double most) { return least + (most - least) * (random_() / 4294967296.0); }
    void changeBands()
    {
        std::vector<float> gains(below(3) ? 31 : 0);
        const bool isFlat = below(2) == 0;
        for (float& gain : gains) gain = isFlat ? 0 : float(between(-12, 6));
        player_.call("updateEQ", host::Array::of(gains));
    }
    void changeMap()
    {
        std::vector<HostInteger> map(below(6));
        for (HostInteger& entry : map) entry = HostInteger(below(3)) - 1;
        if (below(2)) map = {0, 1};
        player_.call("setChannelMap", host::Array::of(map));
    }

    LoadedHost loaded_;
    support::TemporaryFolder folder_;
    std::mt19937 random_;
    host::Object player_;
};

TEST(FilePlayerRandomWalk, BetweenIoCyclesKeepsOutputFiniteAndAllocatesNothing)
{
    Walk walk;
    for (double played = 0; played < walk.seconds();) {
        for (unsigned steps = walk.below(4); steps > 0; --steps) walk.step();
        if (walk.below(4) == 0) walk.play();
        for (CheckedDevice& device : walk.devices) played += device.step(1 + walk.below(8192));
    }
    walk.check();
}

// A second thread runs the I/O cycles, so that the thread sanitizer can find races.
TEST(FilePlayerRandomWalk, DuringIoCyclesKeepsOutputFiniteAndAllocatesNothing)
{
    Walk walk;
    std::atomic<int> playedMilliseconds{0};
    std::atomic<bool> isOver{false};
    std::thread audio([&] {
        double played = 0;
        while (!isOver) {
            for (CheckedDevice& device : walk.devices) played += device.step(256);
            playedMilliseconds = int(played * 1000);
        }
    });
    while (playedMilliseconds < walk.seconds() * 1000 / 2) {
        walk.step();
        if (walk.below(4) == 0) walk.play();
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    isOver = true;
    audio.join();
    walk.check();
}

// ---- the allocator hook ----

void* volatile kept = nullptr;

TEST(FilePlayerRandomWalk, HookCountsAllocationsAndFreesOfAWatchedThread)
{
    const allocator_hook::Count count;
    kept = std::malloc(16);
    EXPECT_EQ(count.heapCalls(), 0);
    allocator_hook::watchThisThread(true);
    std::free(kept);
    kept = std::malloc(16);
    allocator_hook::watchThisThread(false);
    EXPECT_EQ(count.heapCalls(), 2);
    std::free(kept);
}

} // namespace
