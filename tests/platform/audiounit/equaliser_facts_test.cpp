// Tests the graphic equaliser's properties, formats and parameters.
#include "tests/platform/audiounit/sound.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace {

using namespace test;

constexpr AudioUnitParameterID numberOfBands = kGraphicEQParam_NumberOfBands;

struct Equaliser : Unit {
    Equaliser() : Unit('greq', 'aufx') {}
    OSStatus put(AudioUnitParameterID id, Float32 value) const
    {
        return AudioUnitSetParameter(*this, id, 0, 0, value, 0);
    }
    Float32 value(AudioUnitParameterID id, OSStatus* status = nullptr) const
    {
        Float32 value = -7;
        const OSStatus result = AudioUnitGetParameter(*this, id, 0, 0, &value);
        if (status) *status = result;
        return value;
    }
    Float64 tail() const { return get<Float64>(kAudioUnitProperty_TailTime, 0, 0); }
};

TEST(Equaliser, HasItsProperties)
{
    const Equaliser unit;
    // clang-format off
    const struct { AudioUnitPropertyID id; AudioUnitScope scope; AudioUnitElement element; OSStatus status; UInt32 size; bool isWritable; const char* why; } facts[] = {
        {21,   0, 0, noErr,                         4,  true,  "bypass"},
        {21,   1, 0, kAudioUnitErr_InvalidScope,    0,  false, "global scope only"},
        {21,   0, 1, kAudioUnitErr_InvalidElement,  0,  false, "one global element"},
        {13,   0, 0, noErr,                         4,  false, "channel counts"},
        {20,   0, 0, noErr,                         8,  false, "tail time"},
        {20,   1, 0, kAudioUnitErr_InvalidScope,    0,  false, "global scope only"},
        {12,   0, 0, noErr,                         8,  false, "latency"},
        {8,    1, 0, noErr,                         40, true,  "the input's format"},
        {8,    1, 1, kAudioUnitErr_InvalidElement,  0,  false, "one input"},
        {8,    2, 0, noErr,                         40, true,  "the output's"},
        {8,    2, 1, kAudioUnitErr_InvalidElement,  0,  false, "one output"},
        {11,   1, 0, noErr,                         4,  true,  "the number of inputs, settable to its own value only"},
        {3007, 1, 0, kAudioUnitErr_InvalidProperty, 0,  false, "no metering"},
        {26,   0, 0, kAudioUnitErr_InvalidProperty, 0,  false, "no render quality"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        UInt32 size = 0;
        Boolean isWritable = false;
        EXPECT_EQ(AudioUnitGetPropertyInfo(unit, fact.id, fact.scope, fact.element, &size, &isWritable),
                  fact.status);
        EXPECT_EQ(size, fact.size);
        EXPECT_EQ(isWritable != 0, fact.isWritable);
    }
    EXPECT_EQ(unit.set(kAudioUnitProperty_ElementCount, 1, 0, UInt32{2}), kAudioUnitErr_PropertyNotWritable);
    EXPECT_EQ(unit.get<Float64>(kAudioUnitProperty_Latency, 0, 0), 0);
    const auto counts = unit.get<AUChannelInfo>(kAudioUnitProperty_SupportedNumChannels, 0, 0);
    EXPECT_EQ(counts.inChannels, -1);
    EXPECT_EQ(counts.outChannels, -1) << "as many outputs as inputs";
    EXPECT_EQ(unit.get<UInt32>(kAudioUnitProperty_BypassEffect, 0, 0), 0u);
    EXPECT_EQ(unit.set(kAudioUnitProperty_BypassEffect, 0, 0, UInt32{1}), noErr);
    EXPECT_EQ(unit.get<UInt32>(kAudioUnitProperty_BypassEffect, 0, 0), 1u);
    EXPECT_EQ(unit.set(kAudioUnitProperty_TailTime, 0, 0, 1.0), kAudioUnitErr_PropertyNotWritable);
}

TEST(Equaliser, NeedsOneFormatOnBothSides)
{
    constexpr OSStatus refused = kAudioUnitErr_FormatNotSupported;
    // clang-format off
    const struct { AudioStreamBasicDescription in, out; OSStatus inStatus, outStatus, status; const char* why; } facts[] = {
        {canonical(44100, 2),  canonical(44100, 2),  noErr,   noErr,   noErr,   "equal"},
        {canonical(8000, 1),   canonical(8000, 1),   noErr,   noErr,   noErr,   "any rate, one channel"},
        {canonical(192000, 8), canonical(192000, 8), noErr,   noErr,   noErr,   "eight channels"},
        {canonical(30, 2),     canonical(30, 2),     noErr,   noErr,   noErr,   "a rate below every band"},
        {canonical(1e9, 1),    canonical(1e9, 1),    noErr,   noErr,   noErr,   "a rate far above"},
        {canonical(44100, 2),  canonical(48000, 2),  noErr,   noErr,   refused, "two rates"},
        {canonical(44100, 1),  canonical(44100, 2),  noErr,   noErr,   refused, "two channel counts"},
        {interleaved(44100, 2), canonical(44100, 2), refused, noErr,   noErr,   "interleaved: the former format stays"},
        {canonical(44100, 2), pcm(44100, 2, 16, isSigned | isPacked | isNonInterleaved), noErr, refused, noErr, "integers: the former format stays"},
        {canonical(0, 2),      canonical(44100, 2),  refused, noErr,   noErr,   "no rate: the former format stays"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Equaliser unit;
        EXPECT_EQ(unit.setFormat(1, fact.in), fact.inStatus);
        EXPECT_EQ(unit.setFormat(2, fact.out), fact.outStatus);
        EXPECT_EQ(AudioUnitInitialize(unit), fact.status);
        EXPECT_EQ(unit.setFormat(2, fact.out),
                  fact.status ? noErr : static_cast<OSStatus>(kAudioUnitErr_Initialized));
    }
}

TEST(Equaliser, HasAGainForEachBand)
{
    constexpr OSStatus noSuch = kAudioUnitErr_InvalidParameter;
    // clang-format off
    const struct { Float32 choice, choiceRead; UInt32 bands; const char* why; } choices[] = {
        {1,    1,    31, "31"},
        {0,    0,    10, "10"},
        {0.4f, 0.4f, 10, "nearer to 0"},
        {0.5f, 0.5f, 31, "the middle"},
        {7,    1,    31, "above the last value"},
        {-3,   0,    10, "below the first value"},
    };
    // clang-format on
    const Equaliser unit;
    EXPECT_EQ(unit.value(numberOfBands), 1) << "31 bands initially";
    for (const auto& choice : choices) {
        SCOPED_TRACE(choice.why);
        EXPECT_EQ(unit.put(numberOfBands, choice.choice), noErr);
        EXPECT_EQ(unit.value(numberOfBands), choice.choiceRead) << "reads back";
        for (UInt32 band = 0; band < 40; ++band) {
            const OSStatus expected = band < choice.bands ? noErr : noSuch;
            OSStatus status = noErr;
            const Float32 value = unit.value(band, &status);
            EXPECT_EQ(status, expected) << band;
            EXPECT_EQ(value, expected ? -7 : 0) << band;
            EXPECT_EQ(unit.put(band, 0), expected) << band;
            unit.get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 0, band, &status);
            EXPECT_EQ(status, expected) << band;
        }
        std::vector<AudioUnitParameterID> ids(40);
        auto size = static_cast<UInt32>(ids.size() * sizeof ids[0]);
        ASSERT_EQ(AudioUnitGetProperty(unit, kAudioUnitProperty_ParameterList, 0, 0, ids.data(), &size),
                  noErr);
        ids.resize(size / sizeof ids[0]);
        std::vector<AudioUnitParameterID> expected(choice.bands);
        std::iota(expected.begin(), expected.end(), 0);
        expected.push_back(numberOfBands);
        EXPECT_EQ(ids, expected);
    }
}

TEST(Equaliser, KeepsItsParametersInRange)
{
    constexpr Float32 infinite = std::numeric_limits<Float32>::infinity();
    constexpr OSStatus badValue = kAudioUnitErr_InvalidPropertyValue;
    // clang-format off
    const struct { AudioUnitParameterID id; AudioUnitScope scope; AudioUnitElement element; Float32 set; OSStatus status; Float32 get; const char* why; } facts[] = {
        {0,  0, 0, 20,         noErr, 20,    "most"},
        {0,  0, 0, 20.1f,      noErr, 20,    "above"},
        {0,  0, 0, infinite,   noErr, 20,    "far above"},
        {30, 0, 0, -20,        noErr, -20,   "least"},
        {30, 0, 0, -20.1f,     noErr, -20,   "below"},
        {7,  0, 0, 0.1f,       noErr, 0.1f,  "reads back exactly"},
        {7,  0, 0, std::nanf(""), badValue, 0.1f, "not a number: nothing changes"},
        {7,  1, 0, 1,          kAudioUnitErr_InvalidScope,   0, "not of an input"},
        {7,  2, 0, 1,          kAudioUnitErr_InvalidScope,   0, "not of the output"},
        {7,  0, 1, 1,          kAudioUnitErr_InvalidElement, 0, "one global element"},
        {31, 0, 0, 1,          kAudioUnitErr_InvalidParameter, 0, "past the last band"},
        {9999,  0, 0, 1,       kAudioUnitErr_InvalidParameter, 0, "before the ID of the number of bands"},
        {10001, 0, 0, 1,       kAudioUnitErr_InvalidParameter, 0, "after the ID of the number of bands"},
        {10000, 1, 0, 1,       kAudioUnitErr_InvalidScope,   0, "global scope only"},
    };
    // clang-format on
    const Equaliser unit;
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_EQ(AudioUnitSetParameter(unit, fact.id, fact.scope, fact.element, fact.set, 0), fact.status);
        Float32 value = -7;
        const OSStatus status = AudioUnitGetParameter(unit, fact.id, fact.scope, fact.element, &value);
        if (!fact.status || fact.status == badValue) {
            EXPECT_EQ(status, noErr);
            EXPECT_EQ(value, fact.get);
        } else {
            EXPECT_EQ(status, fact.status);
        }
    }
}

TEST(Equaliser, KeepsTheGainsOfTheInactiveSet)
{
    const Equaliser unit;
    ASSERT_EQ(unit.put(20, 6), noErr);
    ASSERT_EQ(unit.put(3, 4), noErr);
    ASSERT_EQ(unit.put(numberOfBands, 0), noErr);
    EXPECT_EQ(unit.put(20, -5), kAudioUnitErr_InvalidParameter);
    EXPECT_EQ(unit.value(3), 4) << "a gain belongs to a band's number in either set";
    ASSERT_EQ(unit.put(numberOfBands, 1), noErr);
    EXPECT_EQ(unit.value(20), 6);
}

TEST(Equaliser, DescribesItsParameters)
{
    const Equaliser unit;
    constexpr UInt32 writable = kAudioUnitParameterFlag_IsReadable | kAudioUnitParameterFlag_IsWritable;
    // clang-format off
    const struct { AudioUnitParameterID id; const char* name; UInt32 unit; Float32 least, most, initial; } facts[] = {
        {0,             "band 1",          kAudioUnitParameterUnit_Decibels, -20, 20, 0},
        {30,            "band 31",         kAudioUnitParameterUnit_Decibels, -20, 20, 0},
        {numberOfBands, "number of bands", kAudioUnitParameterUnit_Indexed,  0,   1,  1},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const auto info = unit.get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 0, fact.id);
        EXPECT_STREQ(info.name, fact.name);
        EXPECT_EQ(info.unit, fact.unit) << fact.name;
        EXPECT_EQ(info.minValue, fact.least) << fact.name;
        EXPECT_EQ(info.maxValue, fact.most) << fact.name;
        EXPECT_EQ(info.defaultValue, fact.initial) << fact.name;
        EXPECT_EQ(info.flags, writable) << fact.name;
    }
}

// A flat equaliser has no tail. Bands that are low and narrow have the longest tail.
TEST(Equaliser, ReportsItsTail)
{
    const Equaliser unit;
    EXPECT_EQ(unit.tail(), 0);
    ASSERT_EQ(unit.put(30, 20), noErr); // 20 kHz
    const Float64 high = unit.tail();
    EXPECT_GT(high, 0);
    EXPECT_LT(high, 0.01);
    ASSERT_EQ(unit.put(0, 20), noErr); // 20 Hz
    const Float64 low = unit.tail();
    EXPECT_GT(low, 1);
    EXPECT_LT(low, 4);
    ASSERT_EQ(unit.set(kAudioUnitProperty_BypassEffect, 0, 0, UInt32{1}), noErr);
    EXPECT_EQ(unit.tail(), 0) << "bypassed";
    ASSERT_EQ(unit.set(kAudioUnitProperty_BypassEffect, 0, 0, UInt32{0}), noErr);
    ASSERT_EQ(unit.setFormat(2, canonical(30, 2)), noErr);
    EXPECT_EQ(unit.tail(), 0) << "no band is below half of 30 Hz";
    ASSERT_EQ(unit.setFormat(2, canonical(44100, 2)), noErr);
    ASSERT_EQ(unit.put(0, 0), noErr);
    EXPECT_EQ(unit.tail(), high);
    ASSERT_EQ(unit.put(numberOfBands, 0), noErr);
    EXPECT_EQ(unit.tail(), 0) << "no band of the set of ten is set";
}

} // namespace
