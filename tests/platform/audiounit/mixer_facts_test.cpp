// Tests the multichannel mixer's properties, formats and parameters.
#include "tests/platform/audiounit/sound.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

using namespace test;

struct Mixer : Unit {
    Mixer() : Unit('mcmx', 'aumx') {}
};

constexpr AudioUnitPropertyID metering = kAudioUnitProperty_MeteringMode;

constexpr UInt32 list = ~UInt32{0}; // value size of a property with a list, which may have any size

TEST(Mixer, HasItsProperties)
{
    const Mixer mixer;
    // clang-format off
    const struct { AudioUnitPropertyID id; AudioUnitScope scope; AudioUnitElement element; OSStatus status; UInt32 size; bool isWritable; const char* why; } facts[] = {
        {metering, 1, 0, noErr,                          4,    true,  "each input"},
        {metering, 1, 7, noErr,                          4,    true,  "the last input"},
        {metering, 1, 8, kAudioUnitErr_InvalidElement,   0,    false, "no such input"},
        {metering, 2, 0, noErr,                          4,    true,  "the output"},
        {metering, 2, 1, kAudioUnitErr_InvalidElement,   0,    false, "there is one output"},
        {metering, 0, 0, kAudioUnitErr_InvalidScope,     0,    false, "not in the global scope"},
        {13,       0, 0, noErr,                          4,    false, "channel counts"},
        {11,       1, 0, noErr,                          4,    true,  "the number of inputs"},
        {8,        1, 7, noErr,                          40,   true,  "the format of an input"},
        {8,        2, 0, noErr,                          40,   true,  "the output's"},
        {14,       0, 0, noErr,                          4,    true,  "the slice limit"},
        {20,       0, 0, noErr,                          8,    false, "tail"},
        {3,        1, 0, noErr,                          list, false, "parameters"},
        {21,       0, 0, kAudioUnitErr_InvalidProperty,  0,    false, "a mixer has no bypass"},
        {26,       0, 0, kAudioUnitErr_InvalidProperty,  0,    false, "a mixer has no render quality"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        UInt32 size = 0;
        Boolean isWritable = false;
        EXPECT_EQ(AudioUnitGetPropertyInfo(mixer, fact.id, fact.scope, fact.element, &size, &isWritable),
                  fact.status);
        if (fact.size != list) {
            EXPECT_EQ(size, fact.size);
        }
        EXPECT_EQ(isWritable != 0, fact.isWritable);
    }
    EXPECT_EQ(mixer.get<Float64>(kAudioUnitProperty_TailTime, 0, 0), 0);
    EXPECT_EQ(mixer.get<Float64>(kAudioUnitProperty_Latency, 0, 0), 0);
    const auto counts = mixer.get<AUChannelInfo>(kAudioUnitProperty_SupportedNumChannels, 0, 0);
    EXPECT_EQ(counts.inChannels, -1);
    EXPECT_EQ(counts.outChannels, -2) << "any inputs with any output";
}

TEST(Mixer, Has1To64InputsAndEightInitially)
{
    const Mixer mixer;
    const auto count = [&] { return mixer.get<UInt32>(kAudioUnitProperty_ElementCount, 1, 0); };
    EXPECT_EQ(count(), 8u);
    // clang-format off
    const struct { AudioUnitScope scope; UInt32 set; OSStatus status; UInt32 get; const char* why; } facts[] = {
        {1, 0,          kAudioUnitErr_InvalidPropertyValue, 8,  "none"},
        {1, 1,          noErr,                              1,  "fewest"},
        {1, 64,         noErr,                              64, "most"},
        {1, 65,         kAudioUnitErr_InvalidPropertyValue, 64, "too many"},
        {1, 0xFFFFFFFF, kAudioUnitErr_InvalidPropertyValue, 64, "far too many"},
        {2, 1,          noErr,                              64, "the only output count"},
        {2, 2,          kAudioUnitErr_PropertyNotWritable,  64, "no second output"},
        {1, 3,          noErr,                              3,  "fewer than before"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        EXPECT_EQ(mixer.set(kAudioUnitProperty_ElementCount, fact.scope, 0, fact.set), fact.status)
            << fact.why;
        EXPECT_EQ(count(), fact.get) << fact.why;
    }
    EXPECT_EQ(mixer.setFormat(1, canonical(44100, 2), 2), noErr);
    EXPECT_EQ(mixer.setFormat(1, canonical(44100, 2), 3), kAudioUnitErr_InvalidElement);
    ASSERT_EQ(AudioUnitInitialize(mixer), noErr);
    EXPECT_EQ(mixer.set(kAudioUnitProperty_ElementCount, 1, 0, UInt32{4}), kAudioUnitErr_Initialized);
}

TEST(Mixer, TakesCanonicalFormatsOnly)
{
    const Mixer mixer;
    constexpr OSStatus refused = kAudioUnitErr_FormatNotSupported;
    // clang-format off
    const struct { AudioStreamBasicDescription format; OSStatus status; const char* why; } facts[] = {
        {canonical(44100, 1),    noErr,   "mono"},
        {canonical(8000, 2),     noErr,   "any rate"},
        {canonical(192000, 6),   noErr,   "six channels"},
        {canonical(44100, 1024), noErr,   "most channels"},
        {canonical(44100, 1025), refused, "too many channels"},
        {canonical(44100, 0),    refused, "no channel"},
        {canonical(0, 2),        refused, "no rate"},
        {canonical(-1, 2),       refused, "a negative rate"},
        {canonical(std::nan(""), 2), refused, "rate NaN"},
        {interleaved(44100, 2),  refused, "interleaved"},
        {pcm(44100, 2, 64, isFloat | isPacked | isNonInterleaved),         refused, "64 bits"},
        {pcm(44100, 2, 16, isSigned | isPacked | isNonInterleaved),        refused, "integers"},
        {pcm(44100, 2, 32, isFloat | isPacked | isNonInterleaved | isBig), refused, "big-endian"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        for (AudioUnitScope scope : {1u, 2u}) {
            const auto before =
                mixer.get<AudioStreamBasicDescription>(kAudioUnitProperty_StreamFormat, scope, 0);
            EXPECT_EQ(mixer.setFormat(scope, fact.format), fact.status);
            const auto now =
                mixer.get<AudioStreamBasicDescription>(kAudioUnitProperty_StreamFormat, scope, 0);
            EXPECT_TRUE(now == (fact.status ? before : fact.format));
        }
    }
}

TEST(Mixer, NeedsOneRateForAllConnectedInputs)
{
    // clang-format off
    const struct { Float64 first, second, out; bool isSecondConnected; OSStatus status; const char* why; } facts[] = {
        {48000, 48000, 48000, true,  noErr,                            "equal rates"},
        {48000, 44100, 48000, false, noErr,                            "the input at the other rate is not connected"},
        {48000, 44100, 48000, true,  kAudioUnitErr_FormatNotSupported, "the input at the other rate is connected"},
        {44100, 44100, 48000, true,  kAudioUnitErr_FormatNotSupported, "the output differs"},
        {44100, 48000, 48000, false, kAudioUnitErr_FormatNotSupported, "the output differs from the only connected input"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Mixer mixer;
        Track track(silence(2, 100));
        ASSERT_EQ(mixer.setFormat(1, canonical(fact.first, 2), 0), noErr);
        ASSERT_EQ(mixer.setFormat(1, canonical(fact.second, 1), 1), noErr);
        ASSERT_EQ(mixer.setFormat(2, canonical(fact.out, 2)), noErr);
        ASSERT_EQ(mixer.setCallback(Track::callback, &track, 0), noErr);
        if (fact.isSecondConnected) {
            ASSERT_EQ(mixer.setCallback(Track::callback, &track, 1), noErr);
        }
        EXPECT_EQ(AudioUnitInitialize(mixer), fact.status);
    }
}

TEST(Mixer, RefusesALaterSourceOfAnotherRate)
{
    const Mixer mixer;
    Track good(steady(2, 1000, 0.5f)), bad(steady(2, 1000, 0.25f));
    ASSERT_EQ(mixer.setFormat(1, canonical(48000, 2), 1), noErr);
    ASSERT_EQ(mixer.setCallback(Track::callback, &good, 0), noErr);
    ASSERT_EQ(AudioUnitInitialize(mixer), noErr);
    Rendering rendering(mixer, canonical(44100, 2), 64);
    EXPECT_EQ(rendering.slice(64), noErr);
    ASSERT_EQ(mixer.setCallback(Track::callback, &bad, 1), noErr);
    EXPECT_EQ(rendering.slice(64), kAudioUnitErr_FormatNotSupported);
    EXPECT_EQ(bad.calls, 0);
    ASSERT_EQ(mixer.setCallback(nullptr, nullptr, 1), noErr);
    EXPECT_EQ(rendering.slice(64), noErr);
}

TEST(Mixer, HasItsParameters)
{
    const Mixer mixer;
    constexpr OSStatus noSuch = kAudioUnitErr_InvalidParameter, badScope = kAudioUnitErr_InvalidScope,
                       badElement = kAudioUnitErr_InvalidElement,
                       readOnly = kAudioUnitErr_PropertyNotWritable;
    // clang-format off
    const struct { AudioUnitParameterID id; AudioUnitScope scope; AudioUnitElement element; OSStatus getStatus; Float32 initial, set; OSStatus setStatus; Float32 get; const char* why; } facts[] = {
        {0,    1, 0,  noErr,      1,    0.5f,  noErr,      0.5f,  "volume of an input"},
        {0,    1, 7,  noErr,      1,    1.5f,  noErr,      1,     "of the last one; at most 1"},
        {0,    1, 6,  noErr,      1,    -1,    noErr,      0,     "at least 0"},
        {0,    1, 8,  badElement, 0,    0.5f,  badElement, 0,     "no such input"},
        {0,    2, 0,  noErr,      1,    0.25f, noErr,      0.25f, "volume of the output"},
        {0,    2, 1,  badElement, 0,    0.5f,  badElement, 0,     "there is one output"},
        {0,    0, 0,  badScope,   0,    0.5f,  badScope,   0,     "not in the global scope"},
        {1,    1, 0,  noErr,      1,    0,     noErr,      0,     "enable"},
        {1,    1, 1,  noErr,      1,    0.5f,  noErr,      0.5f,  "stored unchanged"},
        {1,    1, 2,  noErr,      1,    7,     noErr,      1,     "at most 1"},
        {1,    2, 0,  badScope,   0,    0,     badScope,   0,     "not of the output"},
        {2,    1, 0,  noErr,      0,    -0.75f, noErr,     -0.75f, "pan"},
        {2,    1, 1,  noErr,      0,    -2,    noErr,      -1,    "at least -1"},
        {2,    1, 2,  noErr,      0,    2,     noErr,      1,     "at most 1"},
        {2,    2, 0,  badScope,   0,    0,     badScope,   0,     "not of the output"},
        {3,    1, 0,  noSuch,     0,    0,     noSuch,     0,     "unknown ID"},
        {999,  1, 0,  noSuch,     0,    0,     noSuch,     0,     "before the levels' IDs"},
        {1000, 1, 0,  noErr,      -120, 0,     readOnly,   -120,  "pre average power"},
        {1001, 1, 0,  noErr,      -120, 0,     readOnly,   -120,  "of the second channel"},
        {1002, 1, 0,  noSuch,     0,    0,     noSuch,     0,     "of a missing third channel"},
        {1000, 2, 0,  noErr,      -120, 0,     readOnly,   -120,  "of the output"},
        {2000, 1, 7,  noErr,      -120, 0,     readOnly,   -120,  "pre peak hold"},
        {2002, 2, 0,  noSuch,     0,    0,     noSuch,     0,     "of a missing third output channel"},
        {3000, 1, 0,  noErr,      -120, 0,     readOnly,   -120,  "post average power"},
        {3001, 2, 0,  noErr,      -120, 0,     readOnly,   -120,  "of the output's second channel"},
        {3000, 1, 8,  badElement, 0,    0,     badElement, 0,     "no such input"},
        {3000, 0, 0,  badScope,   0,    0,     badScope,   0,     "no level in the global scope"},
        {4000, 2, 0,  noErr,      -120, 0,     readOnly,   -120,  "post peak hold"},
        {4063, 1, 0,  noSuch,     0,    0,     noSuch,     0,     "a missing channel"},
        {5000, 1, 0,  noSuch,     0,    0,     noSuch,     0,     "past the levels' IDs"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        Float32 value = -7;
        EXPECT_EQ(AudioUnitGetParameter(mixer, fact.id, fact.scope, fact.element, &value), fact.getStatus);
        EXPECT_EQ(value, fact.getStatus ? -7 : fact.initial);
        EXPECT_EQ(AudioUnitSetParameter(mixer, fact.id, fact.scope, fact.element, fact.set, 0),
                  fact.setStatus);
        if (fact.getStatus) continue;
        EXPECT_EQ(AudioUnitGetParameter(mixer, fact.id, fact.scope, fact.element, &value), noErr);
        EXPECT_EQ(value, fact.get);
    }
}

TEST(Mixer, HasALevelForEachChannelOfABus)
{
    const Mixer mixer;
    for (const UInt32 channels : {1u, 2u, 6u, 64u, 65u, 1024u}) {
        SCOPED_TRACE(channels);
        ASSERT_EQ(mixer.setFormat(1, canonical(44100, channels), 3), noErr);
        const UInt32 metered = channels < 64 ? channels : 64;
        for (const UInt32 base : {1000u, 2000u, 3000u, 4000u}) {
            Float32 value = 0;
            EXPECT_EQ(AudioUnitGetParameter(mixer, base + metered - 1, 1, 3, &value), noErr);
            EXPECT_EQ(AudioUnitGetParameter(mixer, base + metered, 1, 3, &value),
                      kAudioUnitErr_InvalidParameter);
        }
        UInt32 size = 0;
        ASSERT_EQ(AudioUnitGetPropertyInfo(mixer, kAudioUnitProperty_ParameterList, 1, 3, &size, nullptr),
                  noErr);
        EXPECT_EQ(size, 4 * (3 + 4 * metered));
    }
}

TEST(Mixer, ListsItsParameters)
{
    const Mixer mixer;
    ASSERT_EQ(mixer.setFormat(2, canonical(44100, 1)), noErr);
    const struct {
        AudioUnitScope scope;
        std::vector<UInt32> ids;
    } facts[] = {
        {0, {}},
        {1, {0, 1, 2, 1000, 1001, 2000, 2001, 3000, 3001, 4000, 4001}},
        {2, {0, 1000, 2000, 3000, 4000}},
    };
    for (const auto& fact : facts) {
        std::vector<AudioUnitParameterID> ids(100);
        auto size = static_cast<UInt32>(ids.size() * sizeof ids[0]);
        ASSERT_EQ(
            AudioUnitGetProperty(mixer, kAudioUnitProperty_ParameterList, fact.scope, 0, ids.data(), &size),
            noErr);
        ids.resize(size / sizeof ids[0]);
        EXPECT_EQ(std::vector<UInt32>(ids.begin(), ids.end()), fact.ids) << fact.scope;
    }
}

TEST(Mixer, DescribesItsParameters)
{
    const Mixer mixer;
    constexpr UInt32 writable = kAudioUnitParameterFlag_IsReadable | kAudioUnitParameterFlag_IsWritable,
                     meter = kAudioUnitParameterFlag_IsReadable | kAudioUnitParameterFlag_MeterReadOnly;
    // clang-format off
    const struct { AudioUnitScope scope; AudioUnitParameterID id; const char* name; UInt32 unit; Float32 least, most, initial; UInt32 flags; } facts[] = {
        {1, 0,    "volume",               kAudioUnitParameterUnit_LinearGain, 0,    1,   1,    writable},
        {2, 0,    "volume",               kAudioUnitParameterUnit_LinearGain, 0,    1,   1,    writable},
        {1, 1,    "enable",               kAudioUnitParameterUnit_Boolean,    0,    1,   1,    writable},
        {1, 2,    "pan",                  kAudioUnitParameterUnit_Pan,        -1,   1,   0,    writable},
        {1, 1000, "pre average power 1",  kAudioUnitParameterUnit_Decibels,   -120, 120, -120, meter},
        {1, 2001, "pre peak hold 2",      kAudioUnitParameterUnit_Decibels,   -120, 120, -120, meter},
        {2, 3000, "post average power 1", kAudioUnitParameterUnit_Decibels,   -120, 120, -120, meter},
        {2, 4001, "post peak hold 2",     kAudioUnitParameterUnit_Decibels,   -120, 120, -120, meter},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const auto info =
            mixer.get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, fact.scope, fact.id);
        EXPECT_STREQ(info.name, fact.name);
        EXPECT_EQ(info.unit, fact.unit) << fact.name;
        EXPECT_EQ(info.minValue, fact.least) << fact.name;
        EXPECT_EQ(info.maxValue, fact.most) << fact.name;
        EXPECT_EQ(info.defaultValue, fact.initial) << fact.name;
        EXPECT_EQ(info.flags, fact.flags) << fact.name;
    }
    OSStatus status = noErr;
    mixer.get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 1, 1002, &status);
    EXPECT_EQ(status, kAudioUnitErr_InvalidParameter) << "no input has three channels";
    ASSERT_EQ(mixer.setFormat(1, canonical(44100, 3), 5), noErr);
    mixer.get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 1, 1002, &status);
    EXPECT_EQ(status, noErr) << "one input has three channels";
}

} // namespace
