// Tests the meters of the multichannel mixer against levels computed from the samples.
#include "tests/platform/audiounit/sound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <string>
#include <thread>

namespace {

using namespace test;

constexpr Float32 silent = -120;
enum Base : UInt32 { preAverage = 1000, prePeak = 2000, postAverage = 3000, postPeak = 4000 };

struct Metered : Unit {
    Metered(Sound sound, Float64 rate, UInt32 limit = 4096)
        : Unit('mcmx', 'aumx'), track(std::move(sound)),
          rendering(*this, canonical(rate, static_cast<UInt32>(track.sound.size())), limit)
    {
        const auto format = canonical(rate, static_cast<UInt32>(track.sound.size()));
        EXPECT_EQ(setFormat(1, format), noErr);
        EXPECT_EQ(setFormat(2, format), noErr);
        EXPECT_EQ(setLimit(limit), noErr);
        EXPECT_EQ(setCallback(Track::callback, &track), noErr);
        enable(1);
        EXPECT_EQ(AudioUnitInitialize(*this), noErr);
    }
    void enable(UInt32 isEnabled) const
    {
        EXPECT_EQ(set(kAudioUnitProperty_MeteringMode, 1, 0, isEnabled), noErr);
        EXPECT_EQ(set(kAudioUnitProperty_MeteringMode, 2, 0, isEnabled), noErr);
    }
    Float32 level(Base base, AudioUnitScope scope = 1, UInt32 channel = 0) const
    {
        Float32 value = 0;
        EXPECT_EQ(AudioUnitGetParameter(*this, base + channel, scope, 0, &value), noErr);
        return value;
    }
    void put(AudioUnitParameterID id, AudioUnitScope scope, Float32 value) const
    {
        EXPECT_EQ(AudioUnitSetParameter(*this, id, scope, 0, value, 0), noErr);
    }
    Track track;
    Rendering rendering;
};

double truePower(const std::vector<Float32>& samples, std::size_t until, double rate)
{
    const auto window = static_cast<std::size_t>(std::lround(rate / 10));
    double sum = 0;
    for (std::size_t i = until < window ? 0 : until - window; i < until; ++i)
        sum += static_cast<double>(samples[i]) * static_cast<double>(samples[i]);
    return 10 * std::log10(sum / static_cast<double>(window));
}

/// Returns  noise whose level changes all the time.
Sound modulatedNoise(UInt32 channels, std::size_t frames, double rate)
{
    Sound sound = whiteNoise(channels, frames);
    for (UInt32 c = 0; c < channels; ++c)
        for (std::size_t i = 0; i < frames; ++i) {
            const double seconds = static_cast<double>(i) / rate;
            sound[c][i] *= static_cast<Float32>(0.5 + 0.49 * std::sin(20 * seconds + c));
        }
    return sound;
}

TEST(MixerLevels, AverageThePowerOfTheLast100Milliseconds)
{
    for (const double rate : {8000.0, 22050.0, 44100.0, 48000.0, 192000.0})
        for (const UInt32 slice : {37u, 512u, 4096u}) {
            SCOPED_TRACE(std::to_string(rate) + " Hz, slices of " + std::to_string(slice));
            const auto frames = static_cast<std::size_t>(rate / 2);
            Metered mixer(modulatedNoise(2, frames, rate), rate);
            while (mixer.rendering.at + slice <= static_cast<double>(frames)) {
                ASSERT_EQ(mixer.rendering.slice(slice), noErr);
                const auto until = static_cast<std::size_t>(mixer.rendering.at);
                for (UInt32 c = 0; c < 2; ++c)
                    for (const AudioUnitScope scope : {1u, 2u})
                        for (const Base base : {preAverage, postAverage})
                            ASSERT_NEAR(mixer.level(base, scope, c),
                                        truePower(mixer.track.sound[c], until, rate), 0.1)
                                << until << " frames, channel " << c;
            }
        }
}

TEST(MixerLevels, MeasureATone)
{
    // clang-format off
    const struct { double amplitude; Float32 average, peak; const char* why; } facts[] = {
        {1,    -3.0103f,  0,         "full scale: a sine's power is 3 dB below its peak"},
        {0.5,  -9.0309f,  -6.0206f,  "half"},
        {1e-3, -63.0103f, -60,       "quiet"},
        {1e-5, -103.010f, -100,      "very quiet"},
        {1e-7, silent,    silent,    "below the floor"},
        {10,   16.9897f,  20,        "over full scale"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        Metered mixer(tone(2, 44100, 1000, 44100, fact.amplitude), 44100);
        mixer.rendering.play(8820, 512);
        EXPECT_NEAR(mixer.level(postAverage), fact.average, 0.02) << fact.why;
        EXPECT_NEAR(mixer.level(postAverage, 1, 1), fact.average, 0.02) << fact.why;
        EXPECT_NEAR(mixer.level(postPeak), fact.peak, 0.05) << fact.why;
    }
}

TEST(MixerLevels, AreMeasuredBeforeAndAfterTheFaders)
{
    Metered mixer(tone(2, 44100, 1000, 44100, 1), 44100);
    mixer.put(kMultiChannelMixerParam_Volume, 1, 0.5f);
    mixer.put(kMultiChannelMixerParam_Volume, 2, 0.1f);
    mixer.put(kMultiChannelMixerParam_Pan, 1, 1);
    mixer.rendering.play(8820, 512);
    // clang-format off
    const struct { AudioUnitScope scope; UInt32 channel; Float32 pre, post; const char* why; } facts[] = {
        {1, 0, 0,       -6.02f,  "the input, before its balance"},
        {1, 1, 0,       -6.02f,  "the input's other channel"},
        {2, 0, silent,  silent,  "the output's left"},
        {2, 1, -6.02f,  -26.02f, "its right"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_NEAR(mixer.level(prePeak, fact.scope, fact.channel), fact.pre, 0.05);
        EXPECT_NEAR(mixer.level(postPeak, fact.scope, fact.channel), fact.post, 0.05);
        EXPECT_NEAR(mixer.level(preAverage, fact.scope, fact.channel), std::max(silent, fact.pre - 3.01f),
                    0.05);
        EXPECT_NEAR(mixer.level(postAverage, fact.scope, fact.channel), std::max(silent, fact.post - 3.01f),
                    0.05);
    }
    mixer.put(kMultiChannelMixerParam_Enable, 1, 0);
    mixer.rendering.play(8820, 512);
    EXPECT_NEAR(mixer.level(preAverage), -3.01, 0.05) << "a disabled input is measured before its fader";
    EXPECT_EQ(mixer.level(postAverage), silent);
}

TEST(MixerLevels, AfterTheFaderIncludeTheSamplesBeforeAChangeOfVolume)
{
    Metered mixer(tone(2, 44100, 1000, 44100, 1), 44100);
    mixer.rendering.play(4410, 441);
    EXPECT_EQ(mixer.level(postAverage), mixer.level(preAverage)) << "volume 1 changes no sample";
    EXPECT_EQ(mixer.level(postPeak), mixer.level(prePeak));

    mixer.put(kMultiChannelMixerParam_Volume, 1, 0);
    mixer.rendering.play(441, 441); // the volume ramps to 0
    mixer.rendering.play(1764, 441);
    EXPECT_NEAR(mixer.level(postPeak), 0, 0.05) << "the peak is held";
    EXPECT_NEAR(mixer.level(postAverage), -3.01 - 3.01 + 0.5, 0.5) << "half of the 100 ms";
    EXPECT_NEAR(mixer.level(preAverage), -3.01, 0.05);

    mixer.put(kMultiChannelMixerParam_Volume, 1, 1);
    mixer.rendering.play(441, 441); // the volume ramps to 1
    mixer.rendering.play(2205, 441);
    EXPECT_LT(mixer.level(postAverage), mixer.level(preAverage) - 1) << "40 ms of silence are in the window";

    ASSERT_EQ(AudioUnitReset(mixer, 0, 0), noErr);
    mixer.rendering.play(441, 441);
    EXPECT_EQ(mixer.level(postAverage), mixer.level(preAverage)) << "a reset clears both levels";
    EXPECT_NEAR(mixer.level(postAverage), -13.01, 0.1) << "10 ms of the 100 ms";
}

TEST(MixerLevels, HoldAPeakForASecondThenFall20DecibelsASecond)
{
    for (const UInt32 slice : {64u, 1000u, 4096u}) {
        constexpr double rate = 48000;
        Sound sound = silence(1, 400000);
        sound[0][4800] = -0.5f; // a single peak, at 0.1 s
        Metered mixer(sound, rate);
        // clang-format off
        const struct { double seconds; Float32 peak; const char* why; } facts[] = {
            {0.05, silent,        "before"},
            {0.2,  -6.02f,        "held"},
            {1.0,  -6.02f,        "held"},
            {2.1,  -6.02f - 20,   "a second after the hold"},
            {3.1,  -6.02f - 40,   "two seconds after the hold"},
            {8.1,  silent,        "at the floor"},
        };
        // clang-format on
        for (const auto& fact : facts) {
            mixer.rendering.play(static_cast<std::size_t>(fact.seconds * rate - mixer.rendering.at), slice);
            EXPECT_NEAR(mixer.level(prePeak), fact.peak, 0.1) << fact.why;
            EXPECT_NEAR(mixer.level(postPeak, 2), fact.peak, 0.1) << fact.why;
        }
    }
}

// A higher peak restarts the hold. A lower peak during the hold does not change the level.
TEST(MixerLevels, FollowTheHighestPeak)
{
    constexpr double rate = 48000;
    Sound sound = silence(1, 400000);
    sound[0][100] = 1;
    sound[0][24000] = 0.25f; // a lower peak during the hold of the first peak
    sound[0][96000] = 0.5f;  // a peak at 2 s, when the level of the first peak has fallen to -20 dB
    Metered mixer(sound, rate);
    mixer.rendering.play(48000, 480);
    EXPECT_NEAR(mixer.level(prePeak), 0, 0.1);
    mixer.rendering.play(47900, 480);
    EXPECT_NEAR(mixer.level(prePeak), -20, 0.2);
    mixer.rendering.play(48000, 480);
    EXPECT_NEAR(mixer.level(prePeak), -6.02, 0.1);
}

TEST(MixerLevels, AreAtTheFloorWhileDisabled)
{
    Metered mixer(tone(2, 200000, 1000, 44100, 1), 44100);
    mixer.rendering.play(8820, 512);
    EXPECT_NEAR(mixer.level(postAverage), -3.01, 0.05);
    mixer.enable(0);
    for (const Base base : {preAverage, prePeak, postAverage, postPeak})
        for (const AudioUnitScope scope : {1u, 2u})
            EXPECT_EQ(mixer.level(base, scope), silent) << "without another slice";
    EXPECT_EQ(mixer.get<UInt32>(kAudioUnitProperty_MeteringMode, 1, 0), 0u);
    mixer.rendering.play(8820, 512);
    EXPECT_EQ(mixer.level(postPeak), silent);
    mixer.enable(2);
    EXPECT_EQ(mixer.get<UInt32>(kAudioUnitProperty_MeteringMode, 1, 0), 1u) << "any value but 0 enables";
    EXPECT_EQ(mixer.level(postAverage), silent) << "nothing has been measured yet";
    mixer.rendering.play(441, 441);
    EXPECT_NEAR(mixer.level(postAverage), -13.01, 0.1) << "10 ms of the 100 ms";
    mixer.rendering.play(8820, 512);
    EXPECT_NEAR(mixer.level(postAverage), -3.01, 0.05);
}

TEST(MixerLevels, AreClearedByAReset)
{
    Metered mixer(tone(2, 9000, 1000, 44100, 1), 44100);
    mixer.rendering.play(8820, 512);
    ASSERT_EQ(AudioUnitReset(mixer, 0, 0), noErr);
    mixer.rendering.at = 9000; // sample time after the end of the track
    mixer.rendering.play(512, 512);
    EXPECT_EQ(mixer.level(postAverage), silent);
    EXPECT_EQ(mixer.level(postPeak), silent);
}

TEST(MixerLevels, FallAfterTheSourceIsDisconnected)
{
    Metered mixer(tone(2, 200000, 1000, 44100, 1), 44100);
    mixer.rendering.play(8820, 512);
    ASSERT_EQ(mixer.setCallback(nullptr, nullptr), noErr);
    mixer.rendering.play(2205, 441);
    EXPECT_NEAR(mixer.level(postAverage), -3.01 - 3.01, 0.1) << "half of the 100 ms";
    mixer.rendering.play(4410, 441);
    EXPECT_EQ(mixer.level(postAverage), silent);
    EXPECT_NEAR(mixer.level(postPeak), 0, 0.05) << "the peak is held";
}

TEST(MixerLevels, RecoverFromSamplesThatAreNotFinite)
{
    constexpr Float32 infinite = std::numeric_limits<Float32>::infinity();
    for (const Float32 odd : {infinite, -infinite, std::nanf(""), 3e38f}) {
        Sound sound = tone(1, 400000, 1000, 44100, 0.5);
        sound[0][1000] = odd;
        Metered mixer(sound, 44100);
        mixer.rendering.play(2000, 500);
        EXPECT_FALSE(std::isnan(mixer.level(postAverage)));
        EXPECT_LE(mixer.level(postPeak), 120);
        mixer.rendering.play(8820, 500);
        EXPECT_NEAR(mixer.level(postAverage), -9.03, 0.05) << "100 ms later";
        mixer.rendering.play(340000, 4096);
        EXPECT_NEAR(mixer.level(postPeak), -6.02, 0.05) << "after the peak has fallen";
    }
}

TEST(MixerLevels, AreReadByOtherThreadsDuringRendering)
{
    Metered mixer(tone(2, 200000, 1000, 44100, 1), 44100);
    std::atomic<bool> isOver{false};
    std::atomic<int> readings{0}, invalid{0};
    std::thread reader([&] {
        while (!isOver) {
            Float32 value = 0;
            if (AudioUnitGetParameter(mixer, postAverage, 1, 0, &value) ||
                !(value >= silent && value <= 0.1f))
                ++invalid;
            ++readings;
        }
    });
    std::thread switcher([&] {
        for (UInt32 i = 0; !isOver; ++i) mixer.set(kAudioUnitProperty_MeteringMode, 1, 0, i % 2);
    });
    for (int i = 0; i < 300 || readings < 100; ++i) {
        if (i % 300 == 0) mixer.rendering.at = 0;
        mixer.rendering.slice(512);
    }
    isOver = true;
    reader.join();
    switcher.join();
    EXPECT_EQ(invalid, 0);
}

} // namespace
