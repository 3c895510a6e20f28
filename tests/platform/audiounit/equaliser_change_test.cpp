// Tests that changes of the equaliser during rendering make no click.
#include "tests/platform/audiounit/sound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

using namespace test;

constexpr double rate = 44100;

struct Equaliser : Unit {
    explicit Equaliser(Sound sound) : Unit('greq', 'aufx'), track(std::move(sound))
    {
        EXPECT_EQ(setCallback(Track::callback, &track), noErr);
        EXPECT_EQ(AudioUnitInitialize(*this), noErr);
    }
    void put(AudioUnitParameterID id, Float32 value) const
    {
        EXPECT_EQ(AudioUnitSetParameter(*this, id, 0, 0, value, 0), noErr);
    }
    void bypass(UInt32 is) const { EXPECT_EQ(set(kAudioUnitProperty_BypassEffect, 0, 0, is), noErr); }
    Track track;
};

void setAll(const Equaliser& unit, Float32 gain)
{
    for (AudioUnitParameterID band = 0; band < 31; ++band) unit.put(band, gain);
}

/// Returns  the largest second difference of the samples, which is large in a click and amplitude * angle^2
///          in a tone.
double maxSecondDifference(const std::vector<Float32>& samples, std::size_t from)
{
    double largest = 0;
    for (std::size_t i = from + 2; i < samples.size(); ++i)
        largest = std::max(largest, std::fabs(static_cast<double>(samples[i]) -
                                              2 * static_cast<double>(samples[i - 1]) +
                                              static_cast<double>(samples[i - 2])));
    return largest;
}

using Setting = std::function<void(const Equaliser&)>;

struct Change {
    const char* name;
    double hertz;
    Setting before, after;
};

const Change changes[] = {
    {"from flat to a raised band", 1000, [](auto&) {}, [](auto& unit) { unit.put(17, 20); }},
    {"from flat to a lowered band", 1000, [](auto&) {}, [](auto& unit) { unit.put(17, -20); }},
    {"from a raised band to flat", 1000, [](auto& unit) { unit.put(17, 20); },
     [](auto& unit) { unit.put(17, 0); }},
    {"from a lowered band to flat", 1000, [](auto& unit) { unit.put(17, -20); },
     [](auto& unit) { unit.put(17, 0); }},
    {"from raised to lowered", 1000, [](auto& unit) { unit.put(17, 20); },
     [](auto& unit) { unit.put(17, -20); }},
    {"a low band, with a low tone", 63, [](auto&) {}, [](auto& unit) { unit.put(5, 20); }},
    {"the lowest band", 25, [](auto& unit) { unit.put(0, 20); }, [](auto& unit) { unit.put(0, 0); }},
    {"the highest band", 1000, [](auto& unit) { unit.put(30, 20); }, [](auto& unit) { unit.put(30, -20); }},
    {"all bands", 440, [](auto& unit) { setAll(unit, 6); }, [](auto& unit) { setAll(unit, -6); }},
    {"bypass on", 1000, [](auto& unit) { unit.put(17, 20); }, [](auto& unit) { unit.bypass(1); }},
    {"bypass off", 1000,
     [](auto& unit) {
         unit.put(17, -12);
         unit.bypass(1);
     },
     [](auto& unit) { unit.bypass(0); }},
    {"fewer bands", 1000, [](auto& unit) { unit.put(17, 12); },
     [](auto& unit) { unit.put(kGraphicEQParam_NumberOfBands, 0); }},
    {"more bands", 1000,
     [](auto& unit) {
         unit.put(kGraphicEQParam_NumberOfBands, 0);
         unit.put(5, 12);
     },
     [](auto& unit) { unit.put(kGraphicEQParam_NumberOfBands, 1); }},
};

TEST(EqualiserChange, MakesNoClick)
{
    constexpr double amplitude = 0.25;
    for (const Change& change : changes)
        for (const UInt32 slice : {64u, 512u, 1000u}) {
            SCOPED_TRACE(change.name);
            const Equaliser unit(tone(2, 200000, change.hertz, rate, amplitude));
            change.before(unit);
            Rendering rendering(unit, canonical(rate, 2), 1156);
            const Sound settled = rendering.play(88200, slice);
            change.after(unit);
            const Sound during = rendering.play(2048, slice);
            const Sound after = rendering.play(88200, slice);

            std::vector<Float32> whole(settled[0].end() - 4410, settled[0].end());
            whole.insert(whole.end(), during[0].begin(), during[0].end());
            const std::vector<Float32> end(after[0].end() - 4410, after[0].end());
            const std::vector<Float32> start(settled[0].end() - 4410, settled[0].end());
            const double step =
                std::max(largestStep(start, 0, start.size()), largestStep(end, 0, end.size()));
            const double secondDifference =
                std::max(maxSecondDifference(start, 0), maxSecondDifference(end, 0));
            EXPECT_LT(largestStep(whole, 0, whole.size()), 1.05 * step + 0.0005) << "first difference";
            EXPECT_LT(maxSecondDifference(whole, 0), 1.1 * secondDifference + 0.002) << "second difference";
        }
}

TEST(EqualiserChange, ReachesTheGainThatIsSet)
{
    for (const Float32 gain : {12.0f, -20.0f}) {
        const Equaliser unit(tone(2, 200000, 1000, rate, 0.05));
        Rendering rendering(unit, canonical(rate, 2), 1156);
        rendering.play(1000, 512);
        unit.put(17, gain);
        const Sound output = rendering.play(20000, 512);
        EXPECT_NEAR(decibels(amplitudeAt(output[0], 10000, 18820, 1000, rate) / 0.05), gain, 0.05);
    }
}

// After the ramp to flat, the input passes unchanged.
TEST(EqualiserChange, BackToFlatChangesNoBit)
{
    // clang-format off
    const struct { const char* name; Setting back; } ways[] = {
        {"gains of 0",       [](auto& unit) { setAll(unit, 0); }},
        {"bypass on",           [](auto& unit) { unit.bypass(1); }},
        {"the other set of bands", [](auto& unit) { for (UInt32 i = 0; i < 10; ++i) unit.put(i, 0); unit.put(kGraphicEQParam_NumberOfBands, 0); }},
    };
    // clang-format on
    for (const auto& way : ways) {
        const Sound sound = whiteNoise(2, 20000), bits = anyBits(2, 5000);
        Equaliser unit(sound);
        setAll(unit, 12);
        Rendering rendering(unit, canonical(rate, 2), 1156);
        EXPECT_FALSE(sameBits(rendering.play(2000, 512)[0],
                              std::vector<Float32>(sound[0].begin(), sound[0].begin() + 2000)));
        way.back(unit);
        rendering.play(512, 512);
        unit.track.sound = bits;
        rendering.at = 0;
        EXPECT_TRUE(sameBits(rendering.play(5000, 512)[1], bits[1])) << way.name;
    }
}

TEST(EqualiserChange, DoesNotRampBeforeTheFirstSlice)
{
    const Sound sound = whiteNoise(2, 2000);
    Equaliser set(sound), late(sound);
    ASSERT_EQ(AudioUnitUninitialize(set), noErr);
    set.put(17, 12);
    ASSERT_EQ(AudioUnitInitialize(set), noErr);
    Rendering first(set, canonical(rate, 2), 1156), second(late, canonical(rate, 2), 1156);
    late.put(17, 12);
    const Sound expected = first.play(2000, 512);
    EXPECT_EQ(second.play(2000, 512), expected) << "after initialising";
    late.put(17, 0);
    second.play(2000, 512);
    late.put(17, 12);
    ASSERT_EQ(AudioUnitReset(late, 0, 0), noErr);
    second.at = 0;
    EXPECT_EQ(second.play(2000, 512), expected) << "after a reset";
}

} // namespace
