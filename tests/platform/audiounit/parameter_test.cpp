// Tests the parameters of the output units: addresses, ranges, descriptions.
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace test;

// clang-format off
const struct { OSType subType; AudioUnitParameterID id; AudioUnitScope scope; AudioUnitElement element; OSStatus status; const char* why; } addresses[] = {
    {'ahal', 14,         0, 0, noErr,                          "the HAL unit's volume"},
    {'def ', 14,         0, 0, noErr,                          "the default unit's volume"},
    {'sys ', 14,         0, 0, noErr,                          "the system unit's volume"},
    {'genr', 14,         0, 0, kAudioUnitErr_InvalidParameter, "the generic unit has none"},
    {'ahal', 13,         0, 0, kAudioUnitErr_InvalidParameter, "a neighbouring ID"},
    {'ahal', 15,         0, 0, kAudioUnitErr_InvalidParameter, "a neighbouring ID"},
    {'ahal', 0,          0, 0, kAudioUnitErr_InvalidParameter, "ID 0"},
    {'ahal', 0xFFFFFFFF, 0, 0, kAudioUnitErr_InvalidParameter, "the largest ID"},
    {'ahal', 14,         1, 0, kAudioUnitErr_InvalidScope,     "the volume is global"},
    {'ahal', 14,         2, 0, kAudioUnitErr_InvalidScope,     "the volume is global"},
    {'ahal', 14,         3, 0, kAudioUnitErr_InvalidScope,     "a scope that no unit has"},
    {'ahal', 14,         0, 1, kAudioUnitErr_InvalidElement,   "one global element"},
    {'ahal', 14, 0, 0xFFFFFFFF, kAudioUnitErr_InvalidElement,  "the volume is global"},
};
// clang-format on

TEST(Parameters, ExistAtTheListedAddresses)
{
    for (const auto& fact : addresses) {
        SCOPED_TRACE(fact.why);
        const Unit unit(fact.subType);
        Float32 value = -7;
        EXPECT_EQ(AudioUnitGetParameter(unit, fact.id, fact.scope, fact.element, &value), fact.status);
        EXPECT_EQ(value, fact.status ? -7 : 1) << "the default, or unchanged";
        EXPECT_EQ(AudioUnitSetParameter(unit, fact.id, fact.scope, fact.element, 0.5f, 0), fact.status);
    }
}

TEST(Parameters, AreLimitedToTheirRange)
{
    const Unit unit('def ');
    constexpr Float32 infinite = std::numeric_limits<Float32>::infinity();
    // clang-format off
    const struct { Float32 set; OSStatus status; Float32 get; const char* why; } facts[] = {
        {0.5f,         noErr, 0.5f,  "inside"},
        {0,            noErr, 0,     "the least"},
        {1,            noErr, 1,     "the most"},
        {0.1f,         noErr, 0.1f,  "the same float"},
        {1.0001f,      noErr, 1,     "above: the most"},
        {infinite,     noErr, 1,     "infinite: the most"},
        {-0.0001f,     noErr, 0,     "below: the least"},
        {-infinite,    noErr, 0,     "minus infinity: the least"},
        {std::nanf(""), kAudioUnitErr_InvalidPropertyValue, 0, "not a number: refused, unchanged"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        EXPECT_EQ(AudioUnitSetParameter(unit, 14, 0, 0, fact.set, 0), fact.status) << fact.why;
        Float32 value = -7;
        EXPECT_EQ(AudioUnitGetParameter(unit, 14, 0, 0, &value), noErr);
        EXPECT_EQ(value, fact.get) << fact.why;
    }
    EXPECT_EQ(AudioUnitSetParameter(unit, 14, 0, 0, 0.25f, 12345), noErr) << "the frame offset is ignored";
    EXPECT_EQ(AudioUnitGetParameter(unit, 14, 0, 0, nullptr), paramErr);
    EXPECT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(AudioUnitSetParameter(unit, 14, 0, 0, 0.75f, 0), noErr) << "while initialised";
    EXPECT_EQ(AudioUnitUninitialize(unit), noErr);
    Float32 value = 0;
    EXPECT_EQ(AudioUnitGetParameter(unit, 14, 0, 0, &value), noErr);
    EXPECT_EQ(value, 0.75f) << "kept";
    EXPECT_EQ(AudioUnitReset(unit, 0, 0), noErr);
    EXPECT_EQ(AudioUnitGetParameter(unit, 14, 0, 0, &value), noErr);
    EXPECT_EQ(value, 0.75f) << "a reset clears filters only";
}

TEST(Parameters, AreDescribed)
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
