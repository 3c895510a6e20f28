// A device that is set while a player plays on it: what the program is told, and what is heard.
#include "tests/endtoend/audio_objects.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/endtoend/reference_output.h"

#include <cmath>

namespace {

using namespace endtoend;
using host::MemoryBlock;
using host::Object;

/// Samples that tell their index.
std::vector<float> ramp(std::size_t count)
{
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) samples[i] = float(i + 1) / 65536;
    return samples;
}

std::vector<float> part(const std::vector<float>& samples, std::size_t first, std::size_t count)
{
    const auto begin = samples.begin() + std::ptrdiff_t(first);
    return {begin, begin + std::ptrdiff_t(count)};
}

Object playing(host::Host& host, KVXDeviceID device, const std::vector<float>& samples)
{
    Object player = host.create(playerClass);
    player.set("OutputDeviceID", std::int64_t(device));
    EXPECT_TRUE(player.call("PlayFloatAudio", MemoryBlock::copyOf(samples)).boolean());
    return player;
}

TEST(HalSettings, ANewRateIsToldAndHeardAfterTheNextStart)
{
    LoadedHost loaded;
    {
        const AudioObjects audio(loaded.host);
        SteppedDevice device(44100, 2, 64);
        const EventCount rate(loaded.host, device.id(), overall('nsrt'));
        const EventCount format(loaded.host, device.id(), ofOutput('sfmt', 1));
        const std::vector<float> samples = ramp(4096);
        Object player = playing(loaded.host, device.id(), samples);
        device.step(128);
        EXPECT_EQ(device.heard(0), part(samples, 0, 128));

        EXPECT_EQ(audio.set<Float64>(device.id(), overall('nsrt'), 88200), "0");
        EXPECT_EQ(rate.count(), 0) << "events wait for the main queue";
        rate.waitForEvents(1);
        format.waitForEvents(1);
        EXPECT_EQ(audio.get<Float64>(device.id(), overall('nsrt')), 88200.0);
        EXPECT_TRUE(player.get("IsRunning").boolean());

        // The player has read the rate when it started: it goes on sample by sample, an octave higher.
        device.forget();
        device.step(128);
        EXPECT_EQ(device.heard(0), part(samples, 128, 128));
        EXPECT_EQ(player.get("OutputPosition").number(), 256.0);
        player.call("Stop");
        player = nullptr;

        // Started anew, it takes two frames of the device for each of its own.
        ReferenceOutput reference(1, 44100, 88200);
        reference.add(samples);
        player = playing(loaded.host, device.id(), samples);
        device.forget();
        for (int i = 0; i < 4; ++i) {
            device.step(64);
            reference.play(64, 2);
        }
        EXPECT_EQ(device.heard(), reference.played());
        for (std::size_t i = 0; i < 128; ++i) ASSERT_EQ(device.heard(1)[2 * i], samples[i]) << i;
        EXPECT_EQ(player.get("OutputPosition").number(), 128.0);
        player.call("Stop");
        runAllEvents(loaded.host);
        EXPECT_EQ(rate.count(), 1);
        EXPECT_EQ(format.count(), 1);
    }
    EXPECT_EQ(leftOver(loaded.host), "");
}

TEST(HalSettings, ANewSliceLosesAndRepeatsNothing)
{
    LoadedHost loaded;
    {
        const AudioObjects audio(loaded.host);
        SteppedDevice device(44100, 2, 64);
        const EventCount slice(loaded.host, device.id(), overall('fsiz'));
        const std::vector<float> samples = ramp(20000);
        Object player = playing(loaded.host, device.id(), samples);
        std::size_t played = 0;
        int told = 0;
        for (UInt32 frames : {64u, 48u, 512u, 1u, 8192u, 7u, 64u}) {
            if (frames == 48) // as a program of the older kind would, in bytes of two channels
                audio.object.call("AudioDeviceSetPropertyMemory", std::int64_t(device.id()), nullptr, 0,
                                  false, "bsiz", MemoryBlock::copyOf(std::vector<UInt32>{frames * 8}), 0, 4);
            else
                audio.set(device.id(), overall('fsiz'), frames);
            EXPECT_EQ(audio.status(), "0") << frames;
            EXPECT_EQ(audio.get<UInt32>(device.id(), overall('fsiz')), frames);
            device.step(3 * frames / 2 + 5); // never a whole number of slices
            played += 3 * frames / 2 + 5;
            EXPECT_EQ(player.get("OutputPosition").number(), double(played));
            told += frames != 64 || told > 0;
        }
        ASSERT_LT(played, samples.size());
        EXPECT_EQ(device.heard(0), part(samples, 0, played));
        EXPECT_EQ(device.heard(1), device.heard(0));
        runAllEvents(loaded.host);
        EXPECT_EQ(slice.count(), told) << "each new size once, the one that was none not at all";
        player.call("Stop");
    }
    EXPECT_EQ(leftOver(loaded.host), "");
}

// ---- levels ----

constexpr uint32_t slice = 64;
constexpr uint32_t glide = 512;                     // frames that a change of level takes
constexpr uint32_t glideSlices = glide / slice + 1; // and a slice behind it

/// What a device plays of a constant 1 while its levels are set.
class Levels : public testing::Test {
protected:
    Levels() { player_ = playing(loaded_.host, device_.id(), std::vector<float>(100000, 1.0f)); }
    ~Levels() override
    {
        player_.call("Stop");
        player_ = nullptr;
        audio_.object = nullptr;
        EXPECT_EQ(leftOver(loaded_.host), "");
    }

    /// One channel of the next `slices` slices.
    std::vector<float> hear(uint32_t channel, uint32_t slices)
    {
        device_.forget();
        device_.step(slices * slice);
        return device_.heard(channel);
    }

    /// From one level to another over the first frames, in steps no larger than that takes, and there it
    /// stays.
    void expectGlide(const std::vector<float>& heard, float from, float to)
    {
        const float largest = std::fabs(to - from) / float(glide) * 1.0001f;
        float last = from;
        for (std::size_t i = 0; i < glide; ++i) {
            ASSERT_LE(std::fabs(heard[i] - last), largest) << i;
            ASSERT_GE((heard[i] - last) * (to - from), 0) << "never back, at " << i;
            last = heard[i];
        }
        for (std::size_t i = glide - 1; i < heard.size(); ++i) ASSERT_EQ(heard[i], to) << i;
    }

    LoadedHost loaded_;
    AudioObjects audio_{loaded_.host};
    SteppedDevice device_{44100, 2, slice};
    Object player_;
};

TEST_F(Levels, FollowTheVolumeOfTheirChannel)
{
    EXPECT_EQ(hear(0, 2), std::vector<float>(2 * slice, 1.0f)) << "full volume changes no bit";
    float before = 1;
    for (float decibels : {-6.0f, -20.0f, -3.0f, -63.0f, 0.0f}) {
        SCOPED_TRACE(decibels);
        ASSERT_EQ(audio_.set<Float32>(device_.id(), ofOutput('vold', 1), decibels), "0");
        const std::vector<float> heard = hear(0, glideSlices);
        const float after = heard.back();
        expectGlide(heard, before, after);
        EXPECT_NEAR(20 * std::log10(after), decibels, 0.001f);
        EXPECT_EQ(device_.heard(1), std::vector<float>(glideSlices * slice, 1.0f))
            << "the other channel is as it was";
        before = after;
    }
    EXPECT_EQ(before, 1.0f) << "exactly";
    for (float scalar : {0.5f, 0.0f, 1.0f}) {
        ASSERT_EQ(audio_.set<Float32>(device_.id(), ofOutput('volm', 1), scalar), "0");
        const std::vector<float> heard = hear(0, glideSlices);
        expectGlide(heard, before, heard.back());
        EXPECT_NEAR(heard.back(), scalar == 0 ? 0 : std::pow(10.0f, -64 * (1 - scalar) / 20), 1e-7f);
        before = heard.back();
    }
}

TEST_F(Levels, FallToSilenceWhenMutedAndComeBack)
{
    hear(0, 1);
    for (UInt32 element : {0u, 2u}) { // all channels, or the right one
        for (UInt32 isMuted : {1u, 0u}) {
            SCOPED_TRACE(std::to_string(element) + " " + std::to_string(isMuted));
            ASSERT_EQ(audio_.set<UInt32>(device_.id(), ofOutput('mute', element), isMuted), "0");
            expectGlide(hear(1, glideSlices), isMuted ? 1 : 0, isMuted ? 0 : 1);
            if (element)
                EXPECT_EQ(device_.heard(0), std::vector<float>(glideSlices * slice, 1.0f));
            else
                EXPECT_EQ(device_.heard(0), device_.heard(1));
        }
    }
}

TEST_F(Levels, GlideOnceHoweverOftenTheyAreSetInASlice)
{
    hear(0, 1);
    for (float scalar : {0.1f, 0.9f, 0.0f, 0.75f})
        audio_.set<Float32>(device_.id(), ofOutput('volm', 1), scalar);
    const std::vector<float> heard = hear(0, glideSlices);
    expectGlide(heard, 1, heard.back());
    EXPECT_NEAR(20 * std::log10(heard.back()), -16, 0.001f);
}

TEST_F(Levels, OfASilentDeviceNeedNoGlide)
{
    player_.call("Stop");
    audio_.set<Float32>(device_.id(), ofOutput('volm', 1), 0);
    player_ = playing(loaded_.host, device_.id(), std::vector<float>(1000, 1.0f));
    EXPECT_EQ(hear(0, 1), std::vector<float>(slice, 0.0f)) << "nothing was heard before that could jump";
}

// A program that asks has to be told of each, by name.
TEST_F(Levels, AreToldAtTheirAddress)
{
    const EventCount volume(loaded_.host, device_.id(), ofOutput('volm', 1));
    const EventCount decibels(loaded_.host, device_.id(), ofOutput('vold', 1));
    const EventCount other(loaded_.host, device_.id(), ofOutput('volm', 2));
    const EventCount all(loaded_.host, device_.id(), {'****', '****', 1});
    for (float scalar : {0.5f, 0.5f, 0.25f}) audio_.set<Float32>(device_.id(), ofOutput('volm', 1), scalar);
    runAllEvents(loaded_.host);
    EXPECT_EQ(volume.count(), 2);
    EXPECT_EQ(decibels.count(), 2);
    EXPECT_EQ(other.count(), 0);
    EXPECT_EQ(all.count(), 4);
}

} // namespace
