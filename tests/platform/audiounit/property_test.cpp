// Tests every property of the output units, in tables: address, size, access, and when the property can be
// set.
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace {

using namespace test;

constexpr OSStatus noSuch = kAudioUnitErr_InvalidProperty, badScope = kAudioUnitErr_InvalidScope,
                   badElement = kAudioUnitErr_InvalidElement, badValue = kAudioUnitErr_InvalidPropertyValue,
                   readOnly = kAudioUnitErr_PropertyNotWritable, initialized = kAudioUnitErr_Initialized;

// How a property is accessed. bothBefore: read at any time, written only before the unit is initialised.
enum Way { read, write, both, bothBefore };

// Sizes of structures that contain pointers. On 32-bit builds they equal the sizes on the platform.
constexpr bool is32 = sizeof(void*) == 4;
constexpr UInt32 connection = is32 ? 12 : sizeof(AudioUnitConnection),
                 callback = is32 ? 8 : sizeof(AURenderCallbackStruct),
                 info = is32 ? 84 : sizeof(AudioUnitParameterInfo);

struct Fact {
    AudioUnitPropertyID id;
    AudioUnitScope scope;
    AudioUnitElement element;
    UInt32 size; // value size in bytes
    Way way;
    const char* why;
};

// clang-format off
const Fact ofEveryUnit[] = {
    {1,    1, 0, connection, write,      "connection"},
    {2,    1, 0, 8,  bothBefore, "the client's rate"},
    {3,    0, 0, 0,  read,       "parameter list, whose size depends on the unit"},
    {3,    1, 0, 0,  read,       "no parameter in the input"},
    {3,    2, 0, 0,  read,       "no parameter in the output"},
    {8,    1, 0, 40, bothBefore, "the client's format"},
    {11,   0, 0, 4,  bothBefore, "the global scope has one element"},
    {11,   1, 0, 4,  bothBefore, "inputs"},
    {11,   2, 0, 4,  bothBefore, "outputs"},
    {12,   0, 0, 8,  read,       "latency"},
    {13,   0, 0, 4,  read,       "channel counts"},
    {14,   0, 0, 4,  bothBefore, "slice limit"},
    {20,   0, 0, 8,  read,       "tail"},
    {22,   0, 0, 4,  read,       "last error"},
    {23,   1, 0, callback, write,      "callback"},
    {2001, 0, 0, 4,  read,       "is running"},
};
const Fact ofGeneric[] = {
    {2,    2, 0, 8,  bothBefore, "the output's rate"},
    {8,    2, 0, 40, bothBefore, "the output's format"},
};
const Fact ofDeviceUnits[] = {
    {2,    2, 0, 8,  read,       "the device's rate"},
    {4,    0, 14, info, read,      "description of the volume"},
    {8,    2, 0, 40, read,       "the device's format"},
    {2002, 2, 0, 24, both,       "channel map of the six-channel device"},
    {2003, 2, 0, 4,  read,       "output is on"},
    {2006, 2, 0, 4,  read,       "output exists"},
    {2007, 0, 0, 4,  both,       "start at zero"},
};
const Fact ofHAL[] = {
    {2,    1, 1, 8,  read,       "the rate of the device's input"},
    {2,    2, 1, 8,  bothBefore, "the rate of the client's side of the input"},
    {8,    1, 1, 40, read,       "the format of the device's input"},
    {8,    2, 1, 40, bothBefore, "the format of the client's side of the input"},
    {2000, 0, 0, 4,  both,       "device"},
    {2003, 2, 0, 4,  bothBefore, "output on or off"},
    {2003, 1, 1, 4,  bothBefore, "input on or off"},
    {2005, 0, 0, callback, write,      "input callback"},
    {2006, 1, 1, 4,  read,       "input exists"},
};
const Fact ofFollowers[] = {
    {2000, 0, 0, 4,  read,       "the device it follows"},
};
const struct { AudioUnitPropertyID id; AudioUnitScope scope; AudioUnitElement element; OSStatus status; const char* why; } absent[] = {
    {0,      0, 0, noSuch,     "class info"},
    {5,      0, 0, noSuch,     "fast dispatch"},
    {26,     0, 0, noSuch,     "render quality is for converters"},
    {21,     0, 0, noSuch,     "bypass is for effects"},
    {3007,   1, 0, noSuch,     "metering is for mixers"},
    {0xFFFFFFFF, 0, 0, noSuch, "the largest ID"},
    {0xFFFFFFFF, 9, 9, noSuch, "the ID is checked first"},
    {14,     1, 0, badScope,   "the limit is global"},
    {14,     2, 0, badScope,   "the limit is global"},
    {14,     3, 0, badScope,   "a scope that no unit has"},
    {14,     0xFFFFFFFF, 0, badScope, "the largest scope"},
    {23,     0, 0, badScope,   "callbacks are the input's"},
    {23,     2, 0, badScope,   "callbacks are the input's"},
    {8,      0, 0, badScope,   "formats are a bus's"},
    {8,      1, 2, badElement, "no such input"},
    {8,      2, 2, badElement, "no such output"},
    {8,      1, 0xFFFFFFFF, badElement, "the largest element"},
    {14,     0, 1, badElement, "one global element"},
    {23,     1, 1, badElement, "the client has one input"},
    {2001,   0, 1, badElement, "one global element"},
};
// clang-format on

UInt32 sizeOf(const Fact& fact, OSType subType)
{
    return fact.id == 3 && fact.scope == 0 && subType != 'genr' ? 4 : fact.size;
}

void expectFact(const Unit& unit, OSType subType, const Fact& fact)
{
    SCOPED_TRACE(std::string(fact.why) + " (" + std::to_string(fact.id) + ", " + std::to_string(fact.scope) +
                 ", " + std::to_string(fact.element) + ")");
    const UInt32 expected = sizeOf(fact, subType);
    UInt32 size = 0xEEEE;
    Boolean isWritable = 77;
    ASSERT_EQ(AudioUnitGetPropertyInfo(unit, fact.id, fact.scope, fact.element, &size, &isWritable), noErr);
    EXPECT_EQ(size, expected);
    EXPECT_EQ(isWritable, fact.way != read);
    EXPECT_EQ(AudioUnitGetPropertyInfo(unit, fact.id, fact.scope, fact.element, nullptr, nullptr), noErr);

    std::vector<unsigned char> data(expected + 16, 0xEE);
    size = expected;
    if (fact.way == write) {
        EXPECT_EQ(AudioUnitGetProperty(unit, fact.id, fact.scope, fact.element, data.data(), &size), noSuch)
            << "cannot be read";
        EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, data.data(), expected - 1),
                  badValue);
        EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, data.data(), expected + 1),
                  badValue);
        EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, nullptr, 0), noErr)
            << "removed";
        EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, nullptr, expected), badValue);
        return;
    }
    EXPECT_EQ(AudioUnitGetProperty(unit, fact.id, fact.scope, fact.element, data.data(), &size), noErr);
    EXPECT_EQ(size, expected);
    EXPECT_EQ(data[expected], 0xEE) << "nothing written after the value";
    size = expected + 16;
    EXPECT_EQ(AudioUnitGetProperty(unit, fact.id, fact.scope, fact.element, data.data(), &size), noErr);
    EXPECT_EQ(size, expected) << "the size of the value is returned";
    size = 0;
    EXPECT_EQ(AudioUnitGetProperty(unit, fact.id, fact.scope, fact.element, nullptr, &size), noErr);
    EXPECT_EQ(size, expected) << "without a buffer";
    EXPECT_EQ(AudioUnitGetProperty(unit, fact.id, fact.scope, fact.element, data.data(), nullptr), paramErr);
    if (expected) {
        std::fill(data.begin(), data.end(), 0xEE);
        size = expected - 1;
        EXPECT_EQ(AudioUnitGetProperty(unit, fact.id, fact.scope, fact.element, data.data(), &size),
                  badValue);
        EXPECT_EQ(size, expected - 1) << "unchanged after a refusal";
        EXPECT_EQ(data[0], 0xEE);
        size = expected;
        AudioUnitGetProperty(unit, fact.id, fact.scope, fact.element, data.data(), &size);
    }

    const OSStatus refused = fact.way == read ? readOnly : badValue;
    EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, data.data(), expected),
              fact.way == read ? readOnly : noErr)
        << "the value that was read can be written";
    EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, data.data(), expected + 1),
              refused);
    EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, nullptr, expected), refused);
    if (expected) {
        EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, data.data(), expected - 1),
                  refused);
    }

    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, data.data(), expected),
              fact.way == read         ? readOnly
              : fact.way == bothBefore ? initialized
                                       : noErr)
        << "initialised";
    size = expected;
    EXPECT_EQ(AudioUnitGetProperty(unit, fact.id, fact.scope, fact.element, data.data(), &size), noErr)
        << "read while initialised";
    ASSERT_EQ(AudioUnitUninitialize(unit), noErr);
    EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, data.data(), expected),
              fact.way == read ? readOnly : noErr)
        << "uninitialised again";
}

template <std::size_t n>
void expectFacts(const Unit& unit, OSType subType, const Fact (&facts)[n])
{
    for (const Fact& fact : facts) expectFact(unit, subType, fact);
}

class Properties : public ::testing::Test {
protected:
    Properties() : device(48000, 6, 512)
    {
        device.makeDefault();
        device.makeDefault(kAudioHardwarePropertyDefaultSystemOutputDevice);
    }
    SteppedDevice device;
};

TEST_F(Properties, MatchTheTables)
{
    for (const OSType subType : {'ahal', 'def ', 'sys ', 'genr'}) {
        SCOPED_TRACE(subType);
        const Unit unit(subType);
        expectFacts(unit, subType, ofEveryUnit);
        if (subType == 'genr')
            expectFacts(unit, subType, ofGeneric);
        else
            for (const Fact& fact : ofDeviceUnits)
                if (fact.id != 2003 || subType != 'ahal') expectFact(unit, subType, fact);
        if (subType == 'ahal') expectFacts(unit, subType, ofHAL);
        if (subType == 'def ' || subType == 'sys ') expectFacts(unit, subType, ofFollowers);
    }
}

TEST_F(Properties, MissingOnesReturnTheReason)
{
    for (const OSType subType : {'ahal', 'def ', 'sys ', 'genr'}) {
        const Unit unit(subType);
        for (const auto& fact : absent) {
            SCOPED_TRACE(std::string(fact.why));
            UInt32 size = 64;
            Boolean isWritable = 77;
            unsigned char data[64] = {};
            EXPECT_EQ(AudioUnitGetPropertyInfo(unit, fact.id, fact.scope, fact.element, &size, &isWritable),
                      fact.status);
            EXPECT_EQ(AudioUnitGetProperty(unit, fact.id, fact.scope, fact.element, data, &size),
                      fact.status);
            EXPECT_EQ(AudioUnitSetProperty(unit, fact.id, fact.scope, fact.element, data, size), fact.status);
            EXPECT_EQ(size, 64u);
            EXPECT_EQ(isWritable, 77);
        }
    }
    const Unit generic('genr'), follower('def ');
    UInt32 size = 4, word = 0;
    EXPECT_EQ(AudioUnitGetProperty(generic, 2000, 0, 0, &word, &size), noSuch)
        << "the generic unit has no device";
    EXPECT_EQ(AudioUnitGetProperty(generic, 2002, 2, 0, &word, &size), noSuch);
    EXPECT_EQ(AudioUnitGetProperty(follower, 2003, 1, 1, &word, &size), badElement) << "no input element";
    EXPECT_EQ(AudioUnitGetProperty(follower, 2002, 1, 0, &word, &size), badScope);
}

TEST_F(Properties, HaveDefaults)
{
    for (const OSType subType : {'ahal', 'def ', 'sys ', 'genr'}) {
        SCOPED_TRACE(subType);
        const Unit unit(subType);
        EXPECT_TRUE(unit.get<AudioStreamBasicDescription>(8, 1, 0) == canonical(44100, 2));
        EXPECT_EQ(unit.get<Float64>(2, 1, 0), 44100);
        EXPECT_EQ(unit.get<UInt32>(14, 0, 0), 1156u);
        EXPECT_EQ(unit.get<UInt32>(11, 0, 0), 1u);
        EXPECT_EQ(unit.get<UInt32>(11, 1, 0), subType == 'ahal' ? 2u : 1u);
        EXPECT_EQ(unit.get<UInt32>(11, 2, 0), subType == 'ahal' ? 2u : 1u);
        EXPECT_EQ(unit.get<UInt32>(2001, 0, 0), 0u);
        EXPECT_EQ(unit.get<Float64>(20, 0, 0), 0);
        const auto counts = unit.get<AUChannelInfo>(13, 0, 0);
        EXPECT_EQ(counts.inChannels, -1);
        EXPECT_EQ(counts.outChannels, -2);
        if (subType == 'genr') {
            EXPECT_TRUE(unit.get<AudioStreamBasicDescription>(8, 2, 0) == canonical(44100, 2));
            EXPECT_EQ(unit.get<Float64>(12, 0, 0), 0);
            continue;
        }
        EXPECT_TRUE(unit.get<AudioStreamBasicDescription>(8, 2, 0) == canonical(48000, 6)) << "the device's";
        EXPECT_EQ(unit.get<Float64>(2, 2, 0), 48000);
        EXPECT_EQ(unit.get<AudioDeviceID>(2000, 0, 0), device.id());
        EXPECT_EQ(unit.get<UInt32>(2003, 2, 0), 1u);
        EXPECT_EQ(unit.get<UInt32>(2006, 2, 0), 1u);
        EXPECT_EQ(unit.get<UInt32>(2007, 0, 0), 1u);
        if (subType == 'ahal') {
            EXPECT_EQ(unit.get<UInt32>(2003, 1, 1), 0u);
            EXPECT_EQ(unit.get<UInt32>(2006, 1, 1), 0u);
        }
    }
}

TEST_F(Properties, RefuseInvalidValues)
{
    const Unit unit('genr');
    constexpr Float64 infinite = std::numeric_limits<Float64>::infinity();
    for (const Float64 rate : {0.0, -1.0, infinite, std::nan("")})
        EXPECT_EQ(unit.set<Float64>(2, 1, 0, rate), badValue) << rate;
    for (const Float64 rate : {8000.0, 44100.0, 192000.0, 0.5}) {
        EXPECT_EQ(unit.set<Float64>(2, 1, 0, rate), noErr) << rate;
        EXPECT_EQ(unit.get<AudioStreamBasicDescription>(8, 1, 0).mSampleRate, rate);
    }
    EXPECT_EQ(unit.setLimit(0), badValue);
    EXPECT_EQ(unit.setLimit(1), noErr);
    EXPECT_EQ(unit.setLimit(1 << 20), noErr);
    EXPECT_EQ(unit.set<UInt32>(11, 1, 0, 1), noErr) << "the present count";
    EXPECT_EQ(unit.set<UInt32>(11, 1, 0, 2), readOnly) << "the bus count cannot change";
    EXPECT_EQ(unit.set<UInt32>(11, 1, 0, 0), readOnly);
}

TEST_F(Properties, LimitBeyondMemoryFailsTheInitialisation)
{
    const Unit unit('genr');
    ASSERT_EQ(unit.setLimit(0xFFFFFFFF), noErr);
    EXPECT_EQ(AudioUnitInitialize(unit), memFullErr);
    EXPECT_EQ(unit.setLimit(512), noErr) << "still uninitialised";
    EXPECT_EQ(AudioUnitInitialize(unit), noErr);
}

// clang-format off
const struct { AudioStreamBasicDescription format; bool isTaken; const char* why; } formats[] = {
    {pcm(44100, 2, 32, isFloat | isPacked),                  true,  "float"},
    {pcm(44100, 2, 32, isFloat | isPacked | isNonInterleaved),        true,  "float, non-interleaved"},
    {pcm(44100, 2, 64, isFloat | isPacked | isBig),          true,  "double, big-endian"},
    {pcm(8000, 1, 8, isPacked),                              true,  "8 bits unsigned, mono"},
    {pcm(192000, 8, 24, isSigned | isPacked),                true,  "24 bits, eight channels"},
    {pcm(44100, 2, 24, isSigned | isHigh, 4),                true,  "24 in 32 bits"},
    {pcm(44100, 2, 16, isSigned | isPacked, 4),              false, "packed 16 bits cannot fill 32"},
    {pcm(44100, 2, 24, isSigned, 2),                         false, "24 bits do not fit 16"},
    {pcm(44100, 2, 7, isSigned, 1),                          false, "7 bits"},
    {pcm(44100, 2, 16, isFloat | isPacked),                  false, "float of 16 bits"},
    {pcm(44100, 2, 64, isSigned | isPacked),                 false, "integers of 64 bits"},
    {pcm(44100, 2, 32, isSigned | isPacked | 24 << 7),       false, "fixed point"},
    {pcm(44100, 0, 32, isFloat | isPacked),                  false, "no channels"},
    {pcm(44100, 1025, 32, isFloat | isPacked),               false, "too many channels"},
    {pcm(44100, 1024, 32, isFloat | isPacked),               true,  "the most channels"},
    {pcm(0, 2, 32, isFloat | isPacked),                      false, "no rate"},
    {pcm(-44100, 2, 32, isFloat | isPacked),                 false, "a negative rate"},
    {pcm(std::numeric_limits<double>::infinity(), 2, 32, isFloat | isPacked), false, "an infinite rate"},
    {{44100, 'ima4', 0, 34, 64, 0, 2, 0, 0},                 false, "compressed"},
    {{44100, 'lpcm', 9, 8, 1, 8, 2, 32, 1},                  true,  "the reserved field is ignored"},
    {{44100, 'lpcm', 9, 8, 1, 12, 2, 32, 0},                 false, "bytes of packet and frame differ"},
    {{44100, 'lpcm', 9, 16, 2, 8, 2, 32, 0},                 false, "two frames a packet"},
    {{44100, 'lpcm', 9, 7, 1, 7, 2, 32, 0},                  false, "bytes not divisible by the channels"},
    {{44100, 'lpcm', 9, 0, 1, 0, 2, 32, 0},                  false, "no bytes"},
};
// clang-format on

TEST_F(Properties, ClientFormatIsAnyLinearPCM)
{
    for (const OSType subType : {'ahal', 'def ', 'sys ', 'genr'}) {
        const Unit unit(subType);
        for (const auto& fact : formats) {
            SCOPED_TRACE(fact.why);
            const auto before = canonical(11025, 2);
            ASSERT_EQ(unit.setFormat(1, before), noErr);
            EXPECT_EQ(unit.setFormat(1, fact.format),
                      fact.isTaken ? noErr : kAudioUnitErr_FormatNotSupported);
            EXPECT_TRUE(unit.get<AudioStreamBasicDescription>(8, 1, 0) ==
                        (fact.isTaken ? fact.format : before))
                << "unchanged after a refusal";
        }
    }
}

TEST_F(Properties, ChannelMapHasOneEntryPerDeviceChannel)
{
    const Unit unit('ahal');
    using Map = std::vector<SInt32>;
    const auto get = [&] {
        Map map(6, 99);
        UInt32 size = 24;
        EXPECT_EQ(AudioUnitGetProperty(unit, 2002, 2, 0, map.data(), &size), noErr);
        EXPECT_EQ(size, 24u);
        return map;
    };
    const auto set = [&](const Map& map, UInt32 more = 0) {
        return AudioUnitSetProperty(unit, 2002, 2, 0, map.data(), static_cast<UInt32>(map.size() * 4) + more);
    };
    EXPECT_EQ(get(), (Map{0, 1, -1, -1, -1, -1})) << "none set: the client's two channels";
    EXPECT_EQ(set({5, 4, 3, 2, 1, 0}), noErr);
    EXPECT_EQ(get(), (Map{5, 4, 3, 2, 1, 0})) << "unchanged, though the client has two channels";
    EXPECT_EQ(set({1, 0}), noErr);
    EXPECT_EQ(get(), (Map{1, 0, -1, -1, -1, -1})) << "short: the rest is silent";
    EXPECT_EQ(set({0, 1, 0, 1, 0, 1, 0, 1}), noErr);
    EXPECT_EQ(get(), (Map{0, 1, 0, 1, 0, 1})) << "long: cut to the device's channels";
    EXPECT_EQ(set({-1, -1, -1, -1, -1, -1}), noErr);
    EXPECT_EQ(get(), (Map{-1, -1, -1, -1, -1, -1}));
    EXPECT_EQ(set({0, 1, -2}), badValue) << "below -1";
    EXPECT_EQ(set({0, 1}, 1), badValue) << "half an entry";
    EXPECT_EQ(AudioUnitSetProperty(unit, 2002, 2, 0, get().data(), 0), badValue);
    EXPECT_EQ(get(), (Map{-1, -1, -1, -1, -1, -1})) << "unchanged after refusals";
    EXPECT_EQ(AudioUnitSetProperty(unit, 2002, 2, 0, nullptr, 0), noErr);
    EXPECT_EQ(get(), (Map{0, 1, -1, -1, -1, -1})) << "removed";
}

TEST_F(Properties, ClientSelectsTheHALUnitsDevice)
{
    const SteppedDevice other(96000, 4, 256);
    const Unit unit('ahal');
    EXPECT_EQ(unit.get<AudioDeviceID>(2000, 0, 0), device.id()) << "none selected: the default device";
    EXPECT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, other.id()), noErr);
    EXPECT_EQ(unit.get<AudioDeviceID>(2000, 0, 0), other.id());
    EXPECT_TRUE(unit.get<AudioStreamBasicDescription>(8, 2, 0) == canonical(96000, 4));
    EXPECT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, 0x7FFFFFF), badValue) << "no such device";
    EXPECT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, kAudioObjectSystemObject), badValue) << "not a device";
    EXPECT_EQ(unit.get<AudioDeviceID>(2000, 0, 0), other.id());
    EXPECT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, 0), noErr);
    EXPECT_EQ(unit.get<AudioDeviceID>(2000, 0, 0), device.id()) << "selection removed: the default device";

    const Unit follower('def ');
    EXPECT_EQ(follower.set<AudioDeviceID>(2000, 0, 0, other.id()), readOnly);
}

TEST(DeviceUnit, LatencyIsTheDevices)
{
    KVXSimulatedDevice description = {};
    description.sampleRate = 48000;
    description.latencyFrames = 960;
    description.isStepped = 1;
    const KVXDeviceID device = KVXPlatformAddSimulatedDevice(&description);
    const Unit unit('ahal');
    ASSERT_EQ(unit.set<AudioDeviceID>(2000, 0, 0, device), noErr);
    const AudioObjectPropertyAddress offset = {kAudioDevicePropertySafetyOffset,
                                               kAudioDevicePropertyScopeOutput, 0};
    UInt32 frames = 0, size = 4;
    AudioObjectGetPropertyData(device, &offset, 0, nullptr, &size, &frames);
    EXPECT_NEAR(unit.get<Float64>(12, 0, 0), (960.0 + frames) / 48000, 1e-9);
    KVXPlatformRemoveSimulatedDevice(device);
}

} // namespace
