// Changes of rate, slice, volume and mute of a device during playback: events and rendered samples.
#include "tests/endtoend/audio_objects.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/endtoend/reference_output.h"

#include <cmath>

namespace {

using namespace endtoend;

using DeviceSettings = LoadedHostTest;
using host::MemoryBlock;
using host::Object;

/// Return samples of which sample n is (n + 1) / 65536, so that a sample identifies its index.
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

TEST_F(DeviceSettings, NewRateRaisesEventsAndAppliesToTheNextStart)
{
    const AudioObjects audio(loaded.host);
    SteppedDevice device(44100, 2, 64);
    const EventCount rate(loaded.host, device.id(), overall('nsrt'));
    const EventCount format(loaded.host, device.id(), ofOutput('sfmt', 1));
    const std::vector<float> samples = ramp(4096);
    Object player = playing(loaded.host, device.id(), samples);
    device.step(128);
    EXPECT_EQ(device.output(0), part(samples, 0, 128));

    EXPECT_EQ(audio.set<Float64>(device.id(), overall('nsrt'), 88200), "0");
    EXPECT_EQ(rate.count(), 0) << "events wait for the main queue";
    rate.waitForEvents(1);
    format.waitForEvents(1);
    EXPECT_EQ(audio.get<Float64>(device.id(), overall('nsrt')), 88200.0);
    EXPECT_TRUE(player.get("IsRunning").boolean());

    // The running player keeps the former rate, so it renders one sample per frame.
    device.clearOutput();
    device.step(128);
    EXPECT_EQ(device.output(0), part(samples, 128, 128));
    EXPECT_EQ(player.get("OutputPosition").number(), 256.0);
    player.call("Stop");
    player = nullptr;

    // A new player renders two device frames per sample.
    ReferenceOutput reference(1, 44100, 88200);
    reference.add(samples);
    player = playing(loaded.host, device.id(), samples);
    device.clearOutput();
    for (int i = 0; i < 4; ++i) {
        device.step(64);
        reference.play(64, 2);
    }
    EXPECT_EQ(device.output(), reference.played());
    for (std::size_t i = 0; i < 128; ++i) ASSERT_EQ(device.output(1)[2 * i], samples[i]) << i;
    EXPECT_EQ(player.get("OutputPosition").number(), 128.0);
    player.call("Stop");
    runAllEvents(loaded.host);
    EXPECT_EQ(rate.count(), 1);
    EXPECT_EQ(format.count(), 1);
}

TEST_F(DeviceSettings, NewSliceSizesNeitherLoseNorRepeatFrames)
{
    const AudioObjects audio(loaded.host);
    SteppedDevice device(44100, 2, 64);
    const EventCount slice(loaded.host, device.id(), overall('fsiz'));
    const std::vector<float> samples = ramp(20000);
    Object player = playing(loaded.host, device.id(), samples);
    std::size_t played = 0;
    int changes = 0;
    for (UInt32 frames : {64u, 48u, 512u, 1u, 8192u, 7u, 64u}) {
        if (frames == 48) // set the slice through the older property, in bytes
            audio.object.call("AudioDeviceSetPropertyMemory", std::int64_t(device.id()), nullptr, 0, false,
                              "bsiz", MemoryBlock::copyOf(std::vector<UInt32>{frames * 8}), 0, 4);
        else
            audio.set(device.id(), overall('fsiz'), frames);
        EXPECT_EQ(audio.status(), "0") << frames;
        EXPECT_EQ(audio.get<UInt32>(device.id(), overall('fsiz')), frames);
        device.step(3 * frames / 2 + 5); // render no whole number of slices
        played += 3 * frames / 2 + 5;
        EXPECT_EQ(player.get("OutputPosition").number(), double(played));
        changes += frames != 64 || changes > 0;
    }
    ASSERT_LT(played, samples.size());
    EXPECT_EQ(device.output(0), part(samples, 0, played));
    EXPECT_EQ(device.output(1), device.output(0));
    runAllEvents(loaded.host);
    EXPECT_EQ(slice.count(), changes) << "one event per changed size";
    player.call("Stop");
}

// ---- levels ----

constexpr uint32_t slice = 64;
constexpr uint32_t glide = 512;                     // frames of a fade to a new level
constexpr uint32_t glideSlices = glide / slice + 1; // slices of a fade, plus one

/// Tests with a player that plays samples of 1 on a device whose volume and mute change.
class DeviceLevels : public LoadedHostTest {
protected:
    DeviceLevels() { player_ = playing(loaded.host, device_.id(), std::vector<float>(100000, 1.0f)); }
    ~DeviceLevels() override { player_.call("Stop"); }

    /// Render the next slices, and return the samples of one channel.
    std::vector<float> render(uint32_t channel, uint32_t slices)
    {
        device_.clearOutput();
        device_.step(slices * slice);
        return device_.output(channel);
    }

    /// Expect a fade: the first samples change monotonically and in small steps from one level to another,
    /// then the new level stays.
    void expectGlide(const std::vector<float>& rendered, float from, float to)
    {
        const float largest = std::fabs(to - from) / float(glide) * 1.0001f;
        float last = from;
        for (std::size_t i = 0; i < glide; ++i) {
            ASSERT_LE(std::fabs(rendered[i] - last), largest) << i;
            ASSERT_GE((rendered[i] - last) * (to - from), 0) << "in the wrong direction at " << i;
            last = rendered[i];
        }
        for (std::size_t i = glide - 1; i < rendered.size(); ++i) ASSERT_EQ(rendered[i], to) << i;
    }

    AudioObjects audio_{loaded.host};
    SteppedDevice device_{44100, 2, slice};
    Object player_;
};

TEST_F(DeviceLevels, FollowTheVolumeOfEachChannel)
{
    EXPECT_EQ(render(0, 2), std::vector<float>(2 * slice, 1.0f)) << "full volume is exact";
    float before = 1;
    for (float decibels : {-6.0f, -20.0f, -3.0f, -63.0f, 0.0f}) {
        SCOPED_TRACE(decibels);
        ASSERT_EQ(audio_.set<Float32>(device_.id(), ofOutput('vold', 1), decibels), "0");
        const std::vector<float> rendered = render(0, glideSlices);
        const float after = rendered.back();
        expectGlide(rendered, before, after);
        EXPECT_NEAR(20 * std::log10(after), decibels, 0.001f);
        EXPECT_EQ(device_.output(1), std::vector<float>(glideSlices * slice, 1.0f))
            << "the other channel does not change";
        before = after;
    }
    EXPECT_EQ(before, 1.0f) << "0 dB is exact";
    for (float scalar : {0.5f, 0.0f, 1.0f}) {
        ASSERT_EQ(audio_.set<Float32>(device_.id(), ofOutput('volm', 1), scalar), "0");
        const std::vector<float> rendered = render(0, glideSlices);
        expectGlide(rendered, before, rendered.back());
        EXPECT_NEAR(rendered.back(), scalar == 0 ? 0 : std::pow(10.0f, -64 * (1 - scalar) / 20), 1e-7f);
        before = rendered.back();
    }
}

TEST_F(DeviceLevels, FallToSilenceWhenMutedAndRiseWhenUnmuted)
{
    render(0, 1);
    for (UInt32 element : {0u, 2u}) { // element 0 sets all channels, element 2 the right channel
        for (UInt32 isMuted : {1u, 0u}) {
            SCOPED_TRACE(std::to_string(element) + " " + std::to_string(isMuted));
            ASSERT_EQ(audio_.set<UInt32>(device_.id(), ofOutput('mute', element), isMuted), "0");
            expectGlide(render(1, glideSlices), isMuted ? 1 : 0, isMuted ? 0 : 1);
            if (element)
                EXPECT_EQ(device_.output(0), std::vector<float>(glideSlices * slice, 1.0f));
            else
                EXPECT_EQ(device_.output(0), device_.output(1));
        }
    }
}

TEST_F(DeviceLevels, GlideOnceToTheLastOfSeveralSettings)
{
    render(0, 1);
    for (float scalar : {0.1f, 0.9f, 0.0f, 0.75f})
        audio_.set<Float32>(device_.id(), ofOutput('volm', 1), scalar);
    const std::vector<float> rendered = render(0, glideSlices);
    expectGlide(rendered, 1, rendered.back());
    EXPECT_NEAR(20 * std::log10(rendered.back()), -16, 0.001f);
}

TEST_F(DeviceLevels, OfAStoppedDeviceChangeAtOnce)
{
    player_.call("Stop");
    audio_.set<Float32>(device_.id(), ofOutput('volm', 1), 0);
    player_ = playing(loaded.host, device_.id(), std::vector<float>(1000, 1.0f));
    EXPECT_EQ(render(0, 1), std::vector<float>(slice, 0.0f)) << "no samples before the change";
}

TEST_F(DeviceLevels, RaiseEventsForTheChangedPropertyAndChannelOnly)
{
    const EventCount volume(loaded.host, device_.id(), ofOutput('volm', 1));
    const EventCount decibels(loaded.host, device_.id(), ofOutput('vold', 1));
    const EventCount other(loaded.host, device_.id(), ofOutput('volm', 2));
    const EventCount all(loaded.host, device_.id(), {'****', '****', 1});
    for (float scalar : {0.5f, 0.5f, 0.25f}) audio_.set<Float32>(device_.id(), ofOutput('volm', 1), scalar);
    runAllEvents(loaded.host);
    EXPECT_EQ(volume.count(), 2);
    EXPECT_EQ(decibels.count(), 2);
    EXPECT_EQ(other.count(), 0);
    EXPECT_EQ(all.count(), 4);
}

} // namespace
