// Tests the rate units' parameters, properties, formats and statuses.
#include "tests/platform/audiounit/rate_unit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace test;

constexpr OSType kinds[] = {'nutp', 'tmpt', 'vari'};

// clang-format off
const struct { OSType subType; AudioUnitParameterID id; const char* name; UInt32 unit; Float32 least, most, initial; } parameters[] = {
    {'nutp', 0, "rate",                kAudioUnitParameterUnit_Rate,    1.0f / 32, 32,   1},
    {'nutp', 1, "pitch",               kAudioUnitParameterUnit_Cents,   -2400,     2400, 0},
    {'nutp', 4, "overlap",             kAudioUnitParameterUnit_Generic, 3,         32,   8},
    {'nutp', 6, "enable peak locking", kAudioUnitParameterUnit_Boolean, 0,         1,    1},
    {'tmpt', 0, "rate",                kAudioUnitParameterUnit_Rate,    1.0f / 32, 32,   1},
    {'tmpt', 1, "pitch",               kAudioUnitParameterUnit_Cents,   -2400,     2400, 0},
    {'vari', 0, "playback rate",       kAudioUnitParameterUnit_Rate,    0.25f,     4,    1},
    {'vari', 1, "playback cents",      kAudioUnitParameterUnit_Cents,   -2400,     2400, 0},
};
// clang-format on

TEST(RateParameters, HaveNamesUnitsAndRanges)
{
    for (const auto& row : parameters) {
        SCOPED_TRACE(row.name);
        const Unit unit(row.subType, 'aufc');
        const auto info = unit.get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 0, row.id);
        EXPECT_STREQ(info.name, row.name);
        EXPECT_EQ(info.unit, row.unit);
        EXPECT_EQ(info.minValue, row.least);
        EXPECT_EQ(info.maxValue, row.most);
        EXPECT_EQ(info.defaultValue, row.initial);
        EXPECT_EQ(info.flags, kAudioUnitParameterFlag_IsReadable | kAudioUnitParameterFlag_IsWritable);

        constexpr Float32 infinite = std::numeric_limits<Float32>::infinity();
        const Float32 middle = (row.least + row.most) / 3;
        const struct {
            Float32 set;
            OSStatus status;
            Float32 get;
        } facts[] = {
            {row.least, noErr, row.least},
            {row.most, noErr, row.most},
            {middle, noErr, middle},
            {std::nextafter(row.least, -infinite), noErr, row.least},
            {std::nextafter(row.most, infinite), noErr, row.most},
            {-infinite, noErr, row.least},
            {infinite, noErr, row.most},
            {std::nanf(""), kAudioUnitErr_InvalidPropertyValue, row.most},
        };
        Float32 value = -7;
        EXPECT_EQ(AudioUnitGetParameter(unit, row.id, 0, 0, &value), noErr);
        EXPECT_EQ(value, row.initial);
        for (const auto& fact : facts) {
            EXPECT_EQ(AudioUnitSetParameter(unit, row.id, 0, 0, fact.set, 0), fact.status) << fact.set;
            EXPECT_EQ(AudioUnitGetParameter(unit, row.id, 0, 0, &value), noErr);
            EXPECT_EQ(value, fact.get) << fact.set;
        }
    }
}

TEST(RateParameters, HaveIdsInTheGlobalScope)
{
    // clang-format off
    const struct { OSType subType; std::vector<AudioUnitParameterID> ids; } facts[] = {
        {'nutp', {0, 1, 4, 6}}, {'tmpt', {0, 1}}, {'vari', {0, 1}},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const Unit unit(fact.subType, 'aufc');
        AudioUnitParameterID ids[8];
        UInt32 size = sizeof ids;
        EXPECT_EQ(AudioUnitGetProperty(unit, kAudioUnitProperty_ParameterList, 0, 0, ids, &size), noErr);
        EXPECT_EQ(std::vector<AudioUnitParameterID>(ids, ids + size / sizeof *ids), fact.ids);
        for (AudioUnitParameterID id = 0; id < 10; ++id) {
            const bool is = std::find(fact.ids.begin(), fact.ids.end(), id) != fact.ids.end();
            const OSStatus there = is ? noErr : static_cast<OSStatus>(kAudioUnitErr_InvalidParameter);
            Float32 value = 0;
            EXPECT_EQ(AudioUnitGetParameter(unit, id, 0, 0, &value), there) << id;
            EXPECT_EQ(AudioUnitSetParameter(unit, id, 0, 0, 1, 0), there) << id;
        }
        EXPECT_EQ(AudioUnitSetParameter(unit, 0, 1, 0, 1, 0), kAudioUnitErr_InvalidScope);
        EXPECT_EQ(AudioUnitSetParameter(unit, 0, 2, 0, 1, 0), kAudioUnitErr_InvalidScope);
        EXPECT_EQ(AudioUnitSetParameter(unit, 0, 0, 1, 1, 0), kAudioUnitErr_InvalidElement);
    }
}

// The value that was written last applies, and each parameter returns the value that the other one implies.
TEST(RateParameters, OfVarispeedAreTwoViewsOfOneValue)
{
    const Unit unit('vari', 'aufc');
    const auto get = [&](AudioUnitParameterID id) {
        Float32 value = -7;
        EXPECT_EQ(AudioUnitGetParameter(unit, id, 0, 0, &value), noErr);
        return value;
    };
    // clang-format off
    const struct { AudioUnitParameterID id; Float32 set, rate, cents; const char* why; } facts[] = {
        {0, 2,     2,          1200,       "an octave"},
        {0, 0.25f, 0.25f,      -2400,      "the least"},
        {1, 2400,  4,          2400,       "the most"},
        {1, 100,   1.0594631f, 100,        "a semitone"},
        {1, 33.3f, 1.0194212f, 33.3f,      "cents read back exactly"},
        {0, 1.5f,  1.5f,       701.955f,   "a fifth"},
        {1, 0,     1,          0,          "neutral"},
        {0, 1,     1,          0,          "neutral again"},
        {0, 9,     4,          2400,       "the nearest in range"},
        {1, -9999, 0.25f,      -2400,      "the nearest in range, low"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_EQ(AudioUnitSetParameter(unit, fact.id, 0, 0, fact.set, 0), noErr);
        EXPECT_FLOAT_EQ(get(0), fact.rate);
        EXPECT_FLOAT_EQ(get(1), fact.cents);
    }
}

TEST(RateProperties, HaveDefaultsAndLimits)
{
    for (const OSType kind : kinds) {
        SCOPED_TRACE(kind);
        const Unit unit(kind, 'aufc');
        EXPECT_EQ(unit.get<UInt32>(21, 0, 0), 0u) << "bypass";
        EXPECT_EQ(unit.get<UInt32>(26, 0, 0), 127u) << "render quality";
        EXPECT_EQ(unit.get<Float64>(12, 0, 0), 0) << "latency";
        EXPECT_EQ(unit.get<Float64>(20, 0, 0), 0) << "tail";
        EXPECT_EQ(unit.get<UInt32>(11, 1, 0), 1u) << "inputs";
        EXPECT_EQ(unit.get<UInt32>(11, 2, 0), 1u) << "outputs";
        const auto counts = unit.get<AUChannelInfo>(13, 0, 0);
        EXPECT_EQ(counts.inChannels, -1);
        EXPECT_EQ(counts.outChannels, -1);

        // clang-format off
        const struct { AudioUnitPropertyID id; UInt32 scope, element, value; OSStatus status; const char* why; } facts[] = {
            {26, 0, 0, 0,          noErr,                              "the least quality"},
            {26, 0, 0, 127,        noErr,                              "the most"},
            {26, 0, 0, 128,        kAudioUnitErr_InvalidPropertyValue, "more"},
            {26, 0, 0, 0xFFFFFFFF, kAudioUnitErr_InvalidPropertyValue, "far more"},
            {26, 1, 0, 1,          kAudioUnitErr_InvalidScope,         "global scope only"},
            {26, 0, 1, 1,          kAudioUnitErr_InvalidElement,       "one global element"},
            {21, 0, 0, 1,          noErr,                              "bypass on"},
            {21, 0, 0, 0,          noErr,                              "and off"},
            {21, 2, 0, 1,          kAudioUnitErr_InvalidScope,         "global scope only"},
            {12, 0, 0, 1,          kAudioUnitErr_PropertyNotWritable,  "latency"},
            {20, 0, 0, 1,          kAudioUnitErr_PropertyNotWritable,  "tail"},
            {3007, 0, 0, 1,        kAudioUnitErr_InvalidProperty,      "a mixer's property"},
        };
        // clang-format on
        for (const bool isInitialized : {false, true}) {
            for (const auto& fact : facts)
                EXPECT_EQ(unit.set<UInt32>(fact.id, fact.scope, fact.element, fact.value), fact.status)
                    << fact.why;
            EXPECT_EQ(unit.get<UInt32>(26, 0, 0), 127u) << "a refusal changes nothing";
            EXPECT_EQ(AudioUnitInitialize(unit), noErr) << isInitialized;
        }
    }
}

TEST(RateFormats, AreCanonicalAndEqualOnBothSides)
{
    // clang-format off
    const struct { AudioStreamBasicDescription in, out; OSStatus set, initialize; const char* why; } facts[] = {
        {canonical(44100, 2),    canonical(44100, 2),   noErr, noErr, "the default"},
        {canonical(8000, 1),     canonical(8000, 1),    noErr, noErr, "8 kHz mono"},
        {canonical(192000, 6),   canonical(192000, 6),  noErr, noErr, "192 kHz, six channels"},
        {canonical(1, 1),        canonical(1, 1),       noErr, noErr, "1 Hz"},
        {canonical(44100, 64),   canonical(44100, 64),  noErr, noErr, "most channels"},
        {canonical(44100, 65),   canonical(44100, 65),  kAudioUnitErr_FormatNotSupported, noErr, "too many channels"},
        {interleaved(44100, 2),  interleaved(44100, 2), kAudioUnitErr_FormatNotSupported, noErr, "interleaved"},
        {pcm(44100, 2, 16, isSigned | isPacked), pcm(44100, 2, 16, isSigned | isPacked), kAudioUnitErr_FormatNotSupported, noErr, "of 16 bits"},
        {canonical(44100, 2),    canonical(44100, 1),   noErr, kAudioUnitErr_FormatNotSupported, "fewer output channels"},
        {canonical(48000, 2),    canonical(44100, 2),   noErr, kAudioUnitErr_FormatNotSupported, "lower output rate"},
    };
    // clang-format on
    for (const OSType kind : kinds)
        for (const auto& fact : facts) {
            SCOPED_TRACE(fact.why);
            const Unit unit(kind, 'aufc');
            EXPECT_EQ(unit.setFormat(1, fact.in), fact.set);
            EXPECT_EQ(unit.setFormat(2, fact.out), fact.set);
            EXPECT_EQ(AudioUnitInitialize(unit), fact.initialize);
            if (fact.initialize) continue;
            EXPECT_EQ(unit.setFormat(1, fact.in), kAudioUnitErr_Initialized);
        }
}

TEST(RateRendering, IsRefusedPastTheLimitAndWithoutASource)
{
    for (const OSType kind : kinds) {
        RateUnit player({kind, 1.25}, tone(2, 4000, 440, 44100, 0.5), 44100, 300);
        EXPECT_EQ(player.rendering.slice(300), noErr);
        const AudioTimeStamp time = sampleTime(300);
        List list(canonical(44100, 2), 301);
        EXPECT_EQ(AudioUnitRender(player.unit, nullptr, &time, 0, 301, list.get()),
                  kAudioUnitErr_TooManyFramesToProcess);
        EXPECT_EQ(player.unit.setCallback(nullptr, nullptr), noErr);
        EXPECT_EQ(player.rendering.slice(300), kAudioUnitErr_NoConnection);
        EXPECT_EQ(AudioUnitUninitialize(player.unit), noErr);
        EXPECT_EQ(player.rendering.slice(300), kAudioUnitErr_Uninitialized);
    }
}

TEST(RateRendering, ReturnsTheStatusOfItsSource)
{
    for (const OSType kind : kinds)
        for (const double rate : {1.0, 1.25}) {
            RateUnit player({kind, rate}, tone(2, 40000, 440, 44100, 0.5));
            player.track.status = -1234;
            OSStatus status = noErr;
            for (int i = 0; i < 20 && !status; ++i) status = player.rendering.slice(512);
            EXPECT_EQ(status, -1234);
            player.track.status = noErr;
            for (int i = 0; i < 3; ++i) status = player.rendering.slice(512);
            EXPECT_EQ(status, noErr) << "continues when the source does";
        }
}

TEST(RateRendering, PassesTheSilenceFlagOnlyWhenNeutral)
{
    // With another setting than neutral, the unit has a tail after its input has become silent.
    for (const OSType kind : kinds)
        for (const double rate : {1.0, 1.25}) {
            RateUnit player({kind, rate}, tone(2, 40000, 440, 44100, 0.5));
            player.track.saysSilence = true;
            EXPECT_EQ(player.rendering.slice(512), noErr);
            EXPECT_EQ(player.rendering.flags & kAudioUnitRenderAction_OutputIsSilence,
                      rate == 1 ? kAudioUnitRenderAction_OutputIsSilence : 0u);
        }
}

} // namespace
