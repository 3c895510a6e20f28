// Tests the converter unit at one sample rate: formats, channels, slices, properties, errors.
#include "tests/platform/audiounit/fed_unit.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>

namespace {

using namespace test;

struct Converter : FedUnit {
    Converter(const AudioStreamBasicDescription& in, const AudioStreamBasicDescription& out,
              UInt32 limit = 1156)
        : FedUnit('conv', 'aufc', in, out, limit)
    {
    }
};

/// Returns  the source channel that an output channel plays; -1 for silence.
int sourceOf(UInt32 channel, UInt32 sources)
{
    if (sources == 1) return channel < 2 ? 0 : -1;
    return channel < sources ? static_cast<int>(channel) : -1;
}

void expectNoise(const AudioStreamBasicDescription& format, List& list, UInt32 frames, Float64 at,
                 UInt32 sources)
{
    test::expectNoise(format, list, frames, at, sources, sourceOf);
}

// clang-format off
const struct { UInt32 bits, flags, bytes; const char* name; } layouts[] = {
    {32, isFloat | isPacked,                    4, "float"},
    {32, isFloat | isPacked | isNonInterleaved,          4, "float, non-interleaved"},
    {32, isFloat | isPacked | isBig,            4, "float, big-endian"},
    {64, isFloat | isPacked | isNonInterleaved,          8, "double, non-interleaved"},
    {8,  isPacked,                              1, "8 bits unsigned"},
    {16, isSigned | isPacked,                   2, "16 bits"},
    {16, isSigned | isPacked | isBig | isNonInterleaved, 2, "16 bits, big-endian, non-interleaved"},
    {24, isSigned | isPacked,                   3, "24 bits"},
    {24, isSigned | isHigh,                     4, "24 bits high in 32"},
    {32, isSigned | isPacked,                   4, "32 bits"},
};
const UInt32 counts[] = {1, 2, 6};
// clang-format on

TEST(ConverterUnit, ConvertsEveryFormatToEveryOther)
{
    for (const auto& from : layouts)
        for (const auto& to : layouts)
            for (const UInt32 sources : counts)
                for (const UInt32 channels : counts) {
                    SCOPED_TRACE(std::string(from.name) + ", " + std::to_string(sources) + " to " + to.name +
                                 ", " + std::to_string(channels));
                    Converter converter(pcm(44100, sources, from.bits, from.flags, from.bytes),
                                        pcm(44100, channels, to.bits, to.flags, to.bytes));
                    ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
                    List list(converter.format, 100);
                    ASSERT_EQ(converter.render(list, 100, 7), noErr);
                    expectNoise(converter.format, list, 100, 7, sources);
                    if (HasFatalFailure()) return;
                }
}

TEST(ConverterUnit, RendersSlicesUpToTheLimit)
{
    for (const UInt32 limit : {512u, 1156u, 4096u}) {
        Converter converter(interleaved(44100, 2), canonical(44100, 2), limit);
        ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
        Float64 at = 0;
        for (const UInt32 frames : std::initializer_list<UInt32>{1, 512, limit, 1, limit - 1}) {
            List list(converter.format, frames);
            ASSERT_EQ(converter.render(list, frames, at), noErr);
            EXPECT_EQ(list[1].mDataByteSize, frames * 4);
            expectNoise(converter.format, list, frames, at, 2);
            EXPECT_EQ(converter.feeder.requests.back().frames, frames) << "as many as the slice";
            EXPECT_EQ(converter.feeder.requests.back().time.mSampleTime, at);
            at += frames;
        }
        List list(converter.format, limit + 1);
        EXPECT_EQ(converter.render(list, limit + 1, at), kAudioUnitErr_TooManyFramesToProcess);
        EXPECT_EQ(list.bytes(0)[0], 0xEE);
    }
}

TEST(ConverterUnit, CallbackListHasTheInputsFormat)
{
    Converter converter(interleaved(44100, 6), canonical(44100, 2));
    ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
    List list(converter.format, 64);
    list.clearPointers();
    ASSERT_EQ(converter.render(list, 64), noErr);
    const Request& request = converter.feeder.requests.at(0);
    EXPECT_EQ(request.buffers, 1u);
    EXPECT_EQ(request.channels, 6u);
    EXPECT_EQ(request.bytes, 64u * 24);
    expectNoise(converter.format, list, 64, 0, 6); // the samples are in the unit's memory
}

/// A render callback that writes 32-bit samples whose bits float arithmetic would change.
OSStatus oddWords(void*, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32 frames,
                  AudioBufferList* list)
{
    static const std::uint32_t words[] = {0x7F800001, 0xFFC12345, 0x80000000, 0x7F800000,
                                          1,          0xFF800000, 0x7FFFFFFF};
    UInt32 n = 0;
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i)
        for (UInt32 k = 0; k < frames * list->mBuffers[i].mNumberChannels; ++k)
            std::memcpy(static_cast<unsigned char*>(list->mBuffers[i].mData) + k * 4, &words[n++ % 7], 4);
    return noErr;
}

TEST(ConverterUnit, CopiesFloatsBitForBit)
{
    for (const UInt32 channels : counts)
        for (const UInt32 fromFlags : {UInt32{0}, isNonInterleaved})
            for (const UInt32 toFlags : {UInt32{0}, isNonInterleaved}) {
                SCOPED_TRACE(std::to_string(channels) + ", " + std::to_string(fromFlags) + ", " +
                             std::to_string(toFlags));
                const auto in = pcm(44100, channels, 32, isFloat | isPacked | fromFlags);
                Converter converter(in, pcm(44100, channels, 32, isFloat | isPacked | toFlags));
                ASSERT_EQ(converter.unit.setCallback(oddWords, nullptr), noErr);
                ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
                List list(converter.format, 101), source(in, 101);
                oddWords(nullptr, nullptr, nullptr, 0, 101, source.get());
                ASSERT_EQ(converter.render(list, 101), noErr);
                for (UInt32 frame = 0; frame < 101; ++frame)
                    for (UInt32 c = 0; c < channels; ++c)
                        ASSERT_EQ(std::memcmp(sampleIn(list, converter.format, frame, c),
                                              sampleIn(source, in, frame, c), 4),
                                  0);
            }
}

TEST(ConverterUnit, AppliesTheChannelMap)
{
    // clang-format off
    const struct { UInt32 from, to; std::vector<SInt32> map, plays; const char* why; } facts[] = {
        {2, 2, {1, 0},          {1, 0},          "swapped"},
        {6, 2, {5, 5},          {5, 5},          "one channel on both"},
        {1, 2, {-1, 0},         {-1, 0},         "mono on the second channel only"},
        {2, 6, {0, 1, 0, 1},    {0, 1, 0, 1, -1, -1}, "a short map leaves the rest silent"},
        {2, 1, {1, 0, 0},       {1},             "a long map"},
        {2, 2, {2, 1},          {-1, 1},         "no such source channel"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const bool isEarly : {true, false}) {
            SCOPED_TRACE(fact.why);
            Converter converter(interleaved(44100, fact.from), canonical(44100, fact.to));
            const auto set = [&] {
                return AudioUnitSetProperty(converter.unit, 2002, 2, 0, fact.map.data(),
                                            static_cast<UInt32>(fact.map.size() * 4));
            };
            if (isEarly) ASSERT_EQ(set(), noErr);
            ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
            if (!isEarly) ASSERT_EQ(set(), noErr);
            List list(converter.format, 10);
            ASSERT_EQ(converter.render(list, 10), noErr);
            for (UInt32 c = 0; c < fact.to; ++c)
                for (UInt32 i = 0; i < 10; ++i)
                    EXPECT_EQ(static_cast<const float*>(list[c].mData)[i],
                              fact.plays[c] < 0 ? 0 : noise(i, static_cast<UInt32>(fact.plays[c])));
            EXPECT_EQ(AudioUnitSetProperty(converter.unit, 2002, 2, 0, nullptr, 0), noErr);
            list.restore();
            ASSERT_EQ(converter.render(list, 10), noErr);
            expectNoise(converter.format, list, 10, 0, fact.from);
        }
}

TEST(ConverterUnit, ReturnsTheChannelMap)
{
    Converter converter(interleaved(44100, 1), canonical(44100, 4));
    const auto read = [&] {
        SInt32 map[5] = {9, 9, 9, 9, 9};
        UInt32 size = sizeof map;
        EXPECT_EQ(AudioUnitGetProperty(converter.unit, 2002, 2, 0, map, &size), noErr);
        EXPECT_EQ(size, 16u);
        return std::vector<SInt32>(map, map + 5);
    };
    EXPECT_EQ(read(), (std::vector<SInt32>{0, 0, -1, -1, 9}));
    const SInt32 map[] = {3, -1}, bad[] = {0, -2};
    EXPECT_EQ(AudioUnitSetProperty(converter.unit, 2002, 2, 0, map, sizeof map), noErr);
    EXPECT_EQ(read(), (std::vector<SInt32>{3, -1, -1, -1, 9}));
    EXPECT_EQ(AudioUnitSetProperty(converter.unit, 2002, 2, 0, bad, sizeof bad),
              kAudioUnitErr_InvalidPropertyValue);
    EXPECT_EQ(AudioUnitSetProperty(converter.unit, 2002, 2, 0, map, 7), kAudioUnitErr_InvalidPropertyValue);
    EXPECT_EQ(read(), (std::vector<SInt32>{3, -1, -1, -1, 9}));
}

TEST(ConverterUnit, PropertiesAsListed)
{
    constexpr OSStatus readOnly = kAudioUnitErr_PropertyNotWritable;
    constexpr OSStatus wrong = kAudioUnitErr_InvalidPropertyValue;
    // clang-format off
    const struct { AudioUnitPropertyID id; AudioUnitScope scope; AudioUnitElement element; OSStatus status; UInt32 size; bool isWritable; } facts[] = {
        {8,    1, 0, noErr,                        40, true},  {8,    2, 0, noErr,                         40, true},
        {8,    1, 1, kAudioUnitErr_InvalidElement, 0,  false}, {8,    0, 0, kAudioUnitErr_InvalidScope,    0,  false},
        {2,    1, 0, noErr,                        8,  true},  {14,   0, 0, noErr,                         4,  true},
        {26,   0, 0, noErr,                        4,  true},  {3014, 0, 0, noErr,                         4,  true},
        {26,   1, 0, kAudioUnitErr_InvalidScope,   0,  false}, {2002, 2, 0, noErr,                         8,  true},
        {2002, 2, 1, kAudioUnitErr_InvalidElement, 0,  false}, {12,   0, 0, noErr,                         8,  false},
        {20,   0, 0, noErr,                        8,  false}, {13,   0, 0, noErr,                         4,  false},
        {21,   0, 0, kAudioUnitErr_InvalidProperty, 0, false}, {2000, 0, 0, kAudioUnitErr_InvalidProperty, 0,  false},
    };
    // clang-format on
    const Unit unit('conv', 'aufc');
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.id) + " in " + std::to_string(fact.scope));
        UInt32 size = 0;
        Boolean writable = 0;
        EXPECT_EQ(AudioUnitGetPropertyInfo(unit, fact.id, fact.scope, fact.element, &size, &writable),
                  fact.status);
        EXPECT_EQ(size, fact.size);
        EXPECT_EQ(writable, fact.isWritable);
    }
    EXPECT_EQ(unit.get<UInt32>(26, 0, 0), 0x60u);
    EXPECT_EQ(unit.get<UInt32>(3014, 0, 0), UInt32{'norm'});
    EXPECT_EQ(unit.get<Float64>(12, 0, 0), 0) << "the filter looks ahead and adds no delay";
    EXPECT_EQ(unit.get<Float64>(20, 0, 0), 0);
    const auto counted = unit.get<AUChannelInfo>(13, 0, 0);
    EXPECT_EQ(counted.inChannels, -1);
    EXPECT_EQ(counted.outChannels, -2);
    // clang-format off
    const struct { AudioUnitPropertyID id; UInt32 value; OSStatus status; } values[] = {
        {26, 0, noErr}, {26, 127, noErr}, {26, 128, wrong}, {3014, 'line', noErr}, {3014, 'bats', noErr}, {3014, 'norm', noErr},
        {3014, 0, wrong}, {13, 0, readOnly},
    };
    // clang-format on
    for (const auto& fact : values) {
        EXPECT_EQ(unit.set(fact.id, 0, 0, fact.value), fact.status) << fact.id;
        if (!fact.status) {
            EXPECT_EQ(unit.get<UInt32>(fact.id, 0, 0), fact.value);
        }
    }
    EXPECT_EQ(unit.get<UInt32>(26, 0, 0), 127u);
    EXPECT_EQ(unit.set(26, 0, 0, UInt16{1}), wrong);
    // The unit always has one input and one output, so the number of elements cannot change.
    EXPECT_EQ(unit.set(11, 1, 0, UInt32{1}), noErr);
    EXPECT_EQ(unit.set(11, 1, 0, UInt32{2}), readOnly);
}

TEST(ConverterUnit, TailIsTheLookAhead)
{
    const Unit unit('conv', 'aufc');
    ASSERT_EQ(unit.set(2, 2, 0, Float64{48000}), noErr);
    const auto normal = unit.get<Float64>(20, 0, 0);
    EXPECT_GT(normal, 20 / 44100.0);
    EXPECT_LE(normal, 0.025);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(unit.get<Float64>(20, 0, 0), normal) << "the same before and after the initialisation";
    ASSERT_EQ(unit.set(3014, 0, 0, UInt32{'bats'}), noErr);
    EXPECT_NE(unit.get<Float64>(20, 0, 0), normal);
    ASSERT_EQ(unit.set(3014, 0, 0, UInt32{'line'}), noErr);
    EXPECT_EQ(unit.get<Float64>(20, 0, 0), normal);
}

TEST(ConverterUnit, RefusesOtherFormatsThanLinearPCM)
{
    const Unit unit('conv', 'aufc');
    auto other = interleaved(44100, 2), wide = interleaved(44100, 1025), slow = interleaved(0, 2);
    other.mFormatID = 'aac ';
    for (const AudioUnitScope scope : {1u, 2u}) {
        EXPECT_EQ(unit.setFormat(scope, other), kAudioUnitErr_FormatNotSupported);
        EXPECT_EQ(unit.setFormat(scope, wide), kAudioUnitErr_FormatNotSupported);
        EXPECT_EQ(unit.setFormat(scope, slow), kAudioUnitErr_FormatNotSupported);
        EXPECT_TRUE(unit.get<AudioStreamBasicDescription>(8, scope, 0) == canonical(44100, 2));
    }
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(unit.setFormat(1, interleaved(44100, 2)), kAudioUnitErr_Initialized);
}

TEST(ConverterUnit, IsSilentWithoutASource)
{
    const Unit unit('conv', 'aufc');
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    List list(canonical(44100, 2), 10);
    const AudioTimeStamp time = sampleTime(0);
    EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 10, list.get()), kAudioUnitErr_NoConnection);
    for (int i = 0; i < 40; ++i) EXPECT_EQ(list.bytes(0)[i], 0);
}

TEST(ConverterUnit, RendersSilenceOfTheOutputFormatWhenTheSourceFails)
{
    for (const Float64 rate : {44100.0, 48000.0}) {
        Converter converter(interleaved(44100, 2), pcm(rate, 2, 8, isPacked));
        converter.feeder.status = 'fail';
        ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
        List list(converter.format, 10);
        EXPECT_EQ(converter.render(list, 10), 'fail');
        for (int i = 0; i < 20; ++i) EXPECT_EQ(list.bytes(0)[i], 0x80);
        EXPECT_EQ(converter.unit.get<OSStatus>(22, 0, 0), 'fail');
        converter.feeder.status = noErr;
        list.restore();
        const int calls = converter.feeder.calls;
        EXPECT_EQ(converter.render(list, 10, 10), noErr) << "the next slice is rendered";
        EXPECT_GT(converter.feeder.calls, calls) << "from a new call of the source";
    }
}

/// A render callback that writes the first frame only.
OSStatus oneFrame(void*, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                  AudioBufferList* list)
{
    static unsigned char sample[] = {0xC0, 0};
    list->mBuffers[0].mData = sample;
    list->mBuffers[0].mDataByteSize = list->mBuffers[0].mDataByteSize / 10;
    return noErr;
}

TEST(ConverterUnit, FillsMissingInputWithSilenceOfItsFormat)
{
    // clang-format off
    const struct { UInt32 bits, flags; float first; } facts[] = {
        {8,  isPacked,            0.5f},
        {8,  isPacked | isSigned, -0.5f},
        {16, isPacked | isBig,    0.5f},
    };
    // clang-format on
    for (const auto& fact : facts) {
        Converter converter(pcm(44100, 1, fact.bits, fact.flags), canonical(44100, 1));
        ASSERT_EQ(converter.unit.setCallback(oneFrame, nullptr), noErr);
        ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
        List list(converter.format, 10);
        ASSERT_EQ(converter.render(list, 10), noErr);
        const auto* samples = static_cast<const float*>(list[0].mData);
        EXPECT_EQ(samples[0], fact.first);
        for (int i = 1; i < 10; ++i) EXPECT_EQ(samples[i], 0) << i;
    }
}

TEST(ConverterUnit, PullsNoMoreThanTheSourcesSliceLimit)
{
    const Unit first('conv', 'aufc');
    Feeder feeder(pcm(44100, 2, 16, isSigned | isPacked));
    ASSERT_EQ(first.setFormat(1, pcm(44100, 2, 16, isSigned | isPacked)), noErr);
    ASSERT_EQ(first.setFormat(2, interleaved(44100, 2)), noErr);
    ASSERT_EQ(first.setLimit(100), noErr);
    ASSERT_EQ(first.setCallback(Feeder::callback, &feeder), noErr);
    const Unit second('conv', 'aufc');
    ASSERT_EQ(second.set(kAudioUnitProperty_MakeConnection, 1, 0, AudioUnitConnection{first, 0, 0}), noErr);
    EXPECT_TRUE(second.get<AudioStreamBasicDescription>(8, 1, 0) == interleaved(44100, 2))
        << "the source's format";
    ASSERT_EQ(AudioUnitInitialize(first), noErr);
    ASSERT_EQ(AudioUnitInitialize(second), noErr);
    List list(canonical(44100, 2), 250);
    const AudioTimeStamp time = sampleTime(40);
    ASSERT_EQ(AudioUnitRender(second, nullptr, &time, 0, 250, list.get()), noErr);
    expectNoise(canonical(44100, 2), list, 250, 40, 2);
    ASSERT_EQ(feeder.requests.size(), 3u);
    EXPECT_EQ(feeder.requests[0].frames, 100u);
    EXPECT_EQ(feeder.requests[2].frames, 50u);
    EXPECT_EQ(feeder.requests[2].time.mSampleTime, 240);
}

} // namespace
