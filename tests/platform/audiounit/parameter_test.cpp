// Parameters: which there are, their ranges, and who refuses what.
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace test;

// clang-format off
const struct { OSType subType; AudioUnitParameterID id; AudioUnitScope scope; AudioUnitElement element; OSStatus status; const char* why; } places[] = {
    {'ahal', 14,         0, 0, noErr,                          "the HAL unit's volume"},
    {'def ', 14,         0, 0, noErr,                          "the default unit's"},
    {'sys ', 14,         0, 0, noErr,                          "the system unit's"},
    {'genr', 14,         0, 0, kAudioUnitErr_InvalidParameter, "the generic unit has none"},
    {'ahal', 13,         0, 0, kAudioUnitErr_InvalidParameter, "beside it"},
    {'ahal', 15,         0, 0, kAudioUnitErr_InvalidParameter, "beside it"},
    {'ahal', 0,          0, 0, kAudioUnitErr_InvalidParameter, "none of number 0"},
    {'ahal', 0xFFFFFFFF, 0, 0, kAudioUnitErr_InvalidParameter, "no number"},
    {'ahal', 14,         1, 0, kAudioUnitErr_InvalidScope,     "it is global"},
    {'ahal', 14,         2, 0, kAudioUnitErr_InvalidScope,     "likewise"},
    {'ahal', 14,         3, 0, kAudioUnitErr_InvalidScope,     "a scope that no unit has"},
    {'ahal', 14,         0, 1, kAudioUnitErr_InvalidElement,   "one global element"},
    {'ahal', 14, 0, 0xFFFFFFFF, kAudioUnitErr_InvalidElement,  "likewise"},
};
// clang-format on

TEST(Parameters, AreWhereTheyAre)
{
    for (const auto& place : places) {
        SCOPED_TRACE(place.why);
        const Unit unit(place.subType);
        Float32 value = -7;
        EXPECT_EQ(AudioUnitGetParameter(unit, place.id, place.scope, place.element, &value), place.status);
        EXPECT_EQ(value, place.status ? -7 : 1) << "its default, or untouched";
        EXPECT_EQ(AudioUnitSetParameter(unit, place.id, place.scope, place.element, 0.5f, 0), place.status);
    }
}

TEST(Parameters, KeepToTheirRange)
{
    const Unit unit('def ');
    constexpr Float32 infinite = std::numeric_limits<Float32>::infinity();
    // clang-format off
    const struct { Float32 set; OSStatus status; Float32 get; const char* why; } facts[] = {
        {0.5f,         noErr, 0.5f,  "inside"},
        {0,            noErr, 0,     "the least"},
        {1,            noErr, 1,     "the most"},
        {0.1f,         noErr, 0.1f,  "exactly the float that was given"},
        {1.0001f,      noErr, 1,     "above: the most"},
        {infinite,     noErr, 1,     "far above"},
        {-0.0001f,     noErr, 0,     "below: the least"},
        {-infinite,    noErr, 0,     "far below"},
        {std::nanf(""), kAudioUnitErr_InvalidPropertyValue, 0, "not a number: refused, nothing changes"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        EXPECT_EQ(AudioUnitSetParameter(unit, 14, 0, 0, fact.set, 0), fact.status) << fact.why;
        Float32 value = -7;
        EXPECT_EQ(AudioUnitGetParameter(unit, 14, 0, 0, &value), noErr);
        EXPECT_EQ(value, fact.get) << fact.why;
    }
    EXPECT_EQ(AudioUnitSetParameter(unit, 14, 0, 0, 0.25f, 12345), noErr) << "the offset does not matter";
    EXPECT_EQ(AudioUnitGetParameter(unit, 14, 0, 0, nullptr), paramErr);
    EXPECT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(AudioUnitSetParameter(unit, 14, 0, 0, 0.75f, 0), noErr) << "at any time";
    EXPECT_EQ(AudioUnitUninitialize(unit), noErr);
    Float32 value = 0;
    EXPECT_EQ(AudioUnitGetParameter(unit, 14, 0, 0, &value), noErr);
    EXPECT_EQ(value, 0.75f) << "and it stays";
    EXPECT_EQ(AudioUnitReset(unit, 0, 0), noErr);
    EXPECT_EQ(AudioUnitGetParameter(unit, 14, 0, 0, &value), noErr);
    EXPECT_EQ(value, 0.75f) << "a reset is about sound only";
}

TEST(Parameters, SayWhatTheyAre)
{
    const Unit unit('ahal'), generic('genr');
    UInt32 id = 0, size = 4;
    EXPECT_EQ(AudioUnitGetProperty(unit, kAudioUnitProperty_ParameterList, 0, 0, &id, &size), noErr);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(id, 14u);
    size = 4;
    EXPECT_EQ(AudioUnitGetProperty(generic, kAudioUnitProperty_ParameterList, 0, 0, &id, &size), noErr);
    EXPECT_EQ(size, 0u) << "an empty list";

    const auto info = unit.get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 0, 14);
    EXPECT_STREQ(info.name, "volume");
    EXPECT_EQ(info.minValue, 0);
    EXPECT_EQ(info.maxValue, 1);
    EXPECT_EQ(info.defaultValue, 1);
    EXPECT_EQ(info.unit, UInt32{kAudioUnitParameterUnit_LinearGain});
    EXPECT_EQ(info.flags, kAudioUnitParameterFlag_IsReadable | kAudioUnitParameterFlag_IsWritable);
    EXPECT_EQ(info.cfNameString, nullptr);
    OSStatus status = noErr;
    unit.get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 0, 15, &status);
    EXPECT_EQ(status, kAudioUnitErr_InvalidParameter);
}

} // namespace
