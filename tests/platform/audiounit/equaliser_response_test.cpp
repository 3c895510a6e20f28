// Tests the measured frequency response of the graphic equaliser.
#include "tests/platform/audiounit/sound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace {

using namespace test;

constexpr double thirds[31] = {20,   25,   31.5, 40,   50,   63,    80,    100,   125,  160,  200,
                               250,  315,  400,  500,  630,  800,   1000,  1250,  1600, 2000, 2500,
                               3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000, 20000};
constexpr double octaves[10] = {31.5, 63, 125, 250, 500, 1000, 2000, 4000, 8000, 16000};

struct Equaliser : Unit {
    Equaliser(Sound sound, double rate, UInt32 limit = 4096) : Unit('greq', 'aufx'), track(std::move(sound))
    {
        format = canonical(rate, static_cast<UInt32>(track.sound.size()));
        EXPECT_EQ(setFormat(1, format), noErr);
        EXPECT_EQ(setFormat(2, format), noErr);
        EXPECT_EQ(setLimit(limit), noErr);
        EXPECT_EQ(setCallback(Track::callback, &track), noErr);
    }
    void put(AudioUnitParameterID id, Float32 value) const
    {
        EXPECT_EQ(AudioUnitSetParameter(*this, id, 0, 0, value, 0), noErr);
    }
    Rendering ready() const
    {
        EXPECT_EQ(AudioUnitInitialize(*this), noErr);
        return Rendering(*this, format, 4097);
    }
    Track track;
    AudioStreamBasicDescription format;
};

/// Returns  the impulse response of an equaliser with one band set.
std::vector<Float32> impulseResponse(double rate, Float32 bands, AudioUnitParameterID band, Float32 gain,
                                     std::size_t frames)
{
    Sound impulse = silence(1, 1);
    impulse[0][0] = 1;
    const Equaliser unit(impulse, rate);
    unit.put(kGraphicEQParam_NumberOfBands, bands);
    unit.put(band, gain);
    Rendering rendering = unit.ready();
    return rendering.play(frames, 4096)[0];
}

/// Returns  the gain of an impulse response at one frequency, in decibels.
double responseAt(const std::vector<Float32>& impulse, double hertz, double rate)
{
    const double angle = 2 * 3.14159265358979323846 * hertz / rate;
    const double cosine = std::cos(angle), sine = std::sin(angle);
    // The Fourier transform by Horner's rule, which is exact at low frequencies too.
    double re = 0, im = 0;
    for (std::size_t i = impulse.size(); i-- > 0;) {
        const double rotated = re * cosine + im * sine;
        im = im * cosine - re * sine;
        re = rotated + static_cast<double>(impulse[i]);
    }
    return decibels(std::hypot(re, im));
}

/// Expect a gain of less than 1 dB at `distance` octaves below and above a band, as far as these frequencies
/// are below half the sample rate.
void expectFlatAround(const std::vector<Float32>& impulse, double centre, double distance, double rate)
{
    for (const double hertz : {centre * std::exp2(-distance), centre * std::exp2(distance)})
        if (hertz < rate / 2) {
            EXPECT_LT(std::fabs(responseAt(impulse, hertz, rate)), 1) << hertz << " Hz";
        }
}

TEST(EqualiserResponse, EachOf31BandsRaisesItsCentreOnly)
{
    for (const double rate : {44100.0, 48000.0, 88200.0, 96000.0, 192000.0})
        for (AudioUnitParameterID band = 0; band < 31; ++band) {
            SCOPED_TRACE(std::to_string(thirds[band]) + " Hz at " + std::to_string(rate));
            // The response is long enough for the slowest band to fall by 80 dB.
            const auto frames = static_cast<std::size_t>(rate * std::clamp(40 / thirds[band], 0.02, 2.0));
            const auto impulse = impulseResponse(rate, 1, band, 12, frames);
            EXPECT_NEAR(responseAt(impulse, thirds[band], rate), 12, 0.05);
            expectFlatAround(impulse, thirds[band], 2, rate);
        }
}

TEST(EqualiserResponse, EachOf10BandsRaisesItsCentreOnly)
{
    for (const double rate : {44100.0, 96000.0})
        for (AudioUnitParameterID band = 0; band < 10; ++band) {
            SCOPED_TRACE(std::to_string(octaves[band]) + " Hz at " + std::to_string(rate));
            const auto frames = static_cast<std::size_t>(rate * std::clamp(40 / octaves[band], 0.02, 2.0));
            const auto impulse = impulseResponse(rate, 0, band, 12, frames);
            EXPECT_NEAR(responseAt(impulse, octaves[band], rate), 12, 0.05);
            expectFlatAround(impulse, octaves[band], 2, rate);
        }
}

TEST(EqualiserResponse, HasHalfTheDecibelsAtTheLowerEdgeOfABand)
{
    // clang-format off
    const struct { Float32 bands; AudioUnitParameterID band; double centre, edge; const char* why; } facts[] = {
        {1, 17, 1000,  1000 * 0.8908987,  "a sixth of an octave below"},
        {1, 30, 20000, 20000 * 0.8908987, "just below half the rate"},
        {0, 5,  1000,  1000 * 0.7071068,  "half an octave below"},
        {0, 9,  16000, 16000 * 0.7071068, "the last of ten"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const Float32 gain : {-20.0f, -12.0f, -0.5f, 0.5f, 6.0f, 20.0f}) {
            SCOPED_TRACE(std::string(fact.why) + ", " + std::to_string(gain) + " dB");
            const auto impulse = impulseResponse(44100, fact.bands, fact.band, gain, 8820);
            EXPECT_NEAR(responseAt(impulse, fact.centre, 44100), gain, 0.01);
            EXPECT_NEAR(responseAt(impulse, fact.edge, 44100), gain / 2, 0.01);
        }
}

TEST(EqualiserResponse, HasNoBandsAtHalfTheRateAndAbove)
{
    // clang-format off
    const struct { double rate; AudioUnitParameterID band; bool isAvailable; const char* why; } facts[] = {
        {40000, 30, false, "exactly half"},
        {40001, 30, true,  "just below"},
        {32000, 30, false, "above"},
        {32000, 29, false, "exactly half"},
        {32000, 28, true,  "below"},
        {8000,  22, true,  "below"},
        {8000,  23, false, "exactly half"},
        {30,    0,  false, "above"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.rate) + ": " + fact.why);
        const Sound sound = anyBits(1, 2000), finite = whiteNoise(1, 2000);
        const Equaliser bits(sound, fact.rate), noise(finite, fact.rate);
        bits.put(fact.band, 20);
        noise.put(fact.band, 20);
        Rendering ofBits = bits.ready(), ofNoise = noise.ready();
        const Sound output = ofNoise.play(2000, 512);
        if (!fact.isAvailable) {
            EXPECT_TRUE(sameBits(ofBits.play(2000, 512)[0], sound[0]));
            EXPECT_TRUE(sameBits(output[0], finite[0]));
        } else {
            EXPECT_FALSE(sameBits(output[0], finite[0]));
        }
        for (const Float32 sample : output[0]) ASSERT_LT(std::fabs(sample), 20);
    }
}

TEST(EqualiserResponse, FiltersChannelsIndependently)
{
    Sound sound = whiteNoise(3, 3000);
    sound[1] = std::vector<Float32>(3000, 0);
    const Equaliser together(sound, 44100), alone({sound[2]}, 44100);
    for (const Equaliser* unit : {&together, &alone})
        for (AudioUnitParameterID band = 0; band < 31; ++band) unit->put(band, band % 2 ? 6 : -6);
    Rendering three = together.ready(), one = alone.ready();
    const Sound output = three.play(3000, 512);
    EXPECT_TRUE(sameBits(output[2], one.play(3000, 512)[0]));
    EXPECT_EQ(output[1], std::vector<Float32>(3000, 0)) << "a silent channel stays silent";
}

TEST(EqualiserResponse, DoesNotDependOnTheSliceSize)
{
    const Sound sound = whiteNoise(2, 5000);
    Sound first;
    for (const UInt32 slice : {1u, 63u, 64u, 65u, 512u, 4096u}) {
        const Equaliser unit(sound, 48000);
        for (AudioUnitParameterID band = 0; band < 31; ++band) unit.put(band, 3);
        Rendering rendering = unit.ready();
        Sound output = rendering.play(1000, slice);
        unit.put(4, -20); // a change between two slices starts a ramp
        const Sound rest = rendering.play(4000, slice);
        for (UInt32 c = 0; c < 2; ++c) output[c].insert(output[c].end(), rest[c].begin(), rest[c].end());
        if (first.empty()) first = output;
        for (UInt32 c = 0; c < 2; ++c) EXPECT_TRUE(sameBits(output[c], first[c])) << "slices of " << slice;
    }
}

TEST(EqualiserResponse, ChangesNoBitWhenFlat)
{
    const Sound sound = anyBits(6, 3000);
    for (const UInt32 channels : {1u, 2u, 6u})
        for (const UInt32 slice : {1u, 512u, 1156u}) {
            const Equaliser unit(Sound(sound.begin(), sound.begin() + channels), 44100, 1156);
            Rendering rendering = unit.ready();
            EXPECT_EQ(rendering.slice(1157), kAudioUnitErr_TooManyFramesToProcess);
            rendering.at = 0;
            const Sound output = rendering.play(3000, slice);
            for (UInt32 c = 0; c < channels; ++c)
                EXPECT_TRUE(sameBits(output[c], sound[c])) << channels << " channels, slices of " << slice;
        }
}

TEST(EqualiserResponse, ChangesNoBitWhileBypassed)
{
    const Sound sound = anyBits(2, 3000);
    const Equaliser unit(sound, 44100);
    unit.put(17, 20);
    ASSERT_EQ(unit.set(kAudioUnitProperty_BypassEffect, 0, 0, UInt32{1}), noErr);
    Rendering rendering = unit.ready();
    const Sound output = rendering.play(3000, 512);
    EXPECT_TRUE(sameBits(output[0], sound[0]));
    EXPECT_TRUE(sameBits(output[1], sound[1]));
}

TEST(EqualiserResponse, ReturnsTheStatusOfItsSource)
{
    for (const Float32 gain : {0.0f, 12.0f}) {
        Equaliser unit(steady(2, 100000, 0.5f), 44100);
        unit.put(0, gain);
        Rendering rendering = unit.ready();
        EXPECT_EQ(rendering.slice(64), noErr);
        unit.track.status = -1234;
        EXPECT_EQ(rendering.slice(64), -1234);
        EXPECT_EQ(static_cast<Float32*>(rendering.list[0].mData)[63], 0) << "a failed slice is silent";
        ASSERT_EQ(unit.setCallback(nullptr, nullptr), noErr);
        EXPECT_EQ(rendering.slice(64), kAudioUnitErr_NoConnection);
    }
}

TEST(EqualiserResponse, PassesTheSilenceFlagOnlyWhenFlat)
{
    for (const Float32 gain : {0.0f, 12.0f}) {
        Equaliser unit(silence(2, 100), 44100);
        unit.track.saysSilence = true;
        unit.put(0, gain);
        Rendering rendering = unit.ready();
        ASSERT_EQ(rendering.slice(64), noErr);
        EXPECT_EQ(rendering.flags, gain == 0 ? 0x10u : 0u) << "a band has a tail";
    }
}

TEST(EqualiserResponse, DecaysWithinTheReportedTail)
{
    for (const AudioUnitParameterID band : {0u, 10u, 30u}) {
        Equaliser unit(tone(1, 4410, thirds[band], 44100, 1), 44100);
        unit.put(band, 20);
        const auto tail = unit.get<Float64>(kAudioUnitProperty_TailTime, 0, 0);
        Rendering rendering = unit.ready();
        const auto loud = rendering.play(4410, 441);
        const Sound rest = rendering.play(static_cast<std::size_t>(tail * 44100) + 4410, 441);
        const double highest = *std::max_element(loud[0].begin(), loud[0].end());
        const auto end = static_cast<std::ptrdiff_t>(tail * 44100);
        for (auto each = rest[0].begin() + end; each != rest[0].end(); ++each)
            ASSERT_LT(std::fabs(*each), highest * 3e-5) << "band " << band;
    }
}

TEST(EqualiserResponse, ResetClearsTheFilters)
{
    const Equaliser unit(tone(1, 4410, 20, 44100, 1), 44100);
    unit.put(0, 20);
    Rendering rendering = unit.ready();
    rendering.play(4410, 441);
    const Sound after = rendering.play(441, 441);
    EXPECT_GT(std::fabs(after[0][0]), 0.01f) << "the tail is audible";
    ASSERT_EQ(AudioUnitReset(unit, 0, 0), noErr);
    EXPECT_EQ(rendering.play(441, 441), silence(1, 441));
}

TEST(EqualiserResponse, ABandThatBecomesFlatClearsItsFilter)
{
    const Equaliser unit(tone(1, 4410, 20, 44100, 1), 44100);
    unit.put(0, 20);
    Rendering rendering = unit.ready();
    rendering.play(4410, 441);
    unit.put(0, 0);
    rendering.play(1000, 441);
    unit.put(0, 20);
    EXPECT_EQ(rendering.play(4410, 441), silence(1, 4410));
}

TEST(EqualiserResponse, RecoversFromSamplesThatAreNotFinite)
{
    Sound sound = tone(1, 20000, 1000, 44100, 0.5);
    const Sound odd = anyBits(1, 40);
    std::copy(odd[0].begin(), odd[0].end(), sound[0].begin() + 100);
    const Equaliser unit(sound, 44100);
    for (AudioUnitParameterID band = 0; band < 31; ++band) unit.put(band, 20);
    Rendering rendering = unit.ready();
    const Sound output = rendering.play(20000, 512);
    EXPECT_TRUE(std::isfinite(output[0][19999]));
}

// The filter state must not become subnormal, because arithmetic with subnormal numbers is slow.
TEST(EqualiserResponse, DecaysToExactSilenceWithoutSubnormalNumbers)
{
    for (const AudioUnitParameterID band : {5u, 17u, 30u}) {
        Sound impulse = silence(1, 1);
        impulse[0][0] = 1;
        const Equaliser unit(impulse, 44100);
        unit.put(band, 20);
        Rendering rendering = unit.ready();
        const Sound output = rendering.play(400000, 4096);
        for (const Float32 sample : output[0]) ASSERT_NE(std::fpclassify(sample), FP_SUBNORMAL);
        EXPECT_EQ(output[0].back(), 0) << band;
    }
}

} // namespace
