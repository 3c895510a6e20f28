// Fills, with input procedures that supply fewer frames than requested, more frames, no frames, or fail.
#include "tests/platform/audioconverter/converter.h"

#include <Carbon/Carbon.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

namespace {

using namespace test;

constexpr UInt32 asRequested = ~UInt32{0};

/// The result of one call of the input procedure.
struct Step {
    UInt32 packets;
    OSStatus status = noErr;
    UInt32 covered = asRequested; ///< number of packets that mDataByteSize covers; 0: mData is NULL too
};

/// Input of the mono 16-bit frames 1, 2, 3, … in the given steps. The last step repeats.
struct Script {
    explicit Script(std::vector<Step> s) : steps(std::move(s))
    {
        for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<SInt16>(i + 1);
    }
    static OSStatus procedure(AudioConverterRef, UInt32* packets, AudioBufferList* list,
                              AudioStreamPacketDescription**, void* context)
    {
        Script& self = *static_cast<Script*>(context);
        self.requests.push_back(*packets);
        const Step step = self.steps[std::min(self.requests.size(), self.steps.size()) - 1];
        if (step.packets != asRequested) *packets = step.packets;
        const UInt32 covered = step.covered == asRequested ? *packets : step.covered;
        list->mBuffers[0].mData = covered ? self.memory.data() + self.next : nullptr;
        list->mBuffers[0].mDataByteSize = covered * 2;
        self.next += *packets;
        return step.status;
    }
    std::vector<Step> steps;
    std::vector<UInt32> requests;
    std::vector<SInt16> memory = std::vector<SInt16>(1000);
    UInt32 next = 0;
};

AudioStreamBasicDescription counts() { return pcm(44100, 1, 16, isSigned | isPacked); }

/// Fill up to `frames` frames. Returns the samples made.
std::vector<int> filled(AudioConverterRef converter, Script& script, UInt32 frames, OSStatus status = noErr)
{
    List list(counts(), frames + 1);
    const UInt32 got = fill(converter, Script::procedure, &script, frames, list, status);
    EXPECT_LE(got, frames);
    EXPECT_EQ(list[0].mDataByteSize, got * 2);
    EXPECT_EQ(list.bytes(0)[got * 2], 0xEE) << "nothing is written after the frames";
    const auto* samples = static_cast<const SInt16*>(list[0].mData);
    return {samples, samples + got};
}

std::vector<int> range(int first, int last)
{
    std::vector<int> all;
    for (int i = first; i <= last; ++i) all.push_back(i);
    return all;
}

using Requests = std::vector<UInt32>;

TEST(Fill, FewerFramesThanRequestedArePulledAgain)
{
    const Converter converter(counts(), counts());
    Script script({{3}});
    EXPECT_EQ(filled(converter, script, 10), range(1, 10));
    EXPECT_EQ(script.requests, (Requests{10, 7, 4, 1}));
    EXPECT_EQ(filled(converter, script, 4), range(11, 14)) << "two frames were kept";
    EXPECT_EQ(script.requests, (Requests{10, 7, 4, 1, 2}));
}

TEST(Fill, ExtraFramesStayInTheProceduresMemory)
{
    const Converter converter(counts(), counts());
    Script script({{100}, {0}});
    EXPECT_EQ(filled(converter, script, 10), range(1, 10));
    script.memory[10] = 777; // unread input, which the next fill reads
    EXPECT_EQ(filled(converter, script, 1), (std::vector<int>{777}));
    EXPECT_EQ(filled(converter, script, 80), range(12, 91));
    EXPECT_EQ(script.requests, (Requests{10}));
    EXPECT_EQ(filled(converter, script, 50), range(92, 100));
    EXPECT_EQ(script.requests, (Requests{10, 41}));
}

TEST(Fill, NoFramesEndTheInputUntilAReset)
{
    const Converter converter(counts(), counts());
    Script script({{4}, {0}, {asRequested}});
    EXPECT_EQ(filled(converter, script, 10), range(1, 4));
    EXPECT_EQ(script.requests.size(), 2u);
    EXPECT_EQ(filled(converter, script, 10), range(1, 0));
    EXPECT_EQ(filled(converter, script, 10), range(1, 0));
    EXPECT_EQ(script.requests.size(), 2u) << "the procedure is not called again";
    EXPECT_EQ(AudioConverterReset(converter), noErr);
    EXPECT_EQ(filled(converter, script, 3), range(5, 7));
}

TEST(Fill, ResetDiscardsKeptFrames)
{
    const Converter converter(counts(), counts());
    Script script({{100}});
    EXPECT_EQ(filled(converter, script, 10), range(1, 10));
    EXPECT_EQ(AudioConverterReset(converter), noErr);
    EXPECT_EQ(filled(converter, script, 3), range(101, 103));
}

TEST(Fill, NoFramesAndAnErrorMeanNoneForNow)
{
    const Converter converter(counts(), counts());
    Script script({{4}, {0, 'none'}, {0, 'none'}, {asRequested}});
    EXPECT_EQ(filled(converter, script, 10, 'none'), range(1, 4));
    EXPECT_EQ(filled(converter, script, 10, 'none'), range(1, 0));
    EXPECT_EQ(filled(converter, script, 10), range(5, 14));
}

TEST(Fill, FramesWithAnErrorAreKept)
{
    const Converter converter(counts(), counts());
    Script script({{4}, {5, 'odd '}, {asRequested}});
    EXPECT_EQ(filled(converter, script, 10, 'odd '), range(1, 4));
    EXPECT_EQ(filled(converter, script, 8), range(5, 12));
    EXPECT_EQ(script.requests, (Requests{10, 6, 3}));
}

TEST(Fill, UncoveredFramesAreSilence)
{
    const std::vector<int> silence(4, 0);
    // clang-format off
    const struct { Step step; std::vector<int> frames; const char* why; } facts[] = {
        {{4, noErr, 4},       {1, 2, 3, 4}, "all covered"},
        {{4, noErr, 3},       {1, 2, 3, 0}, "one frame short"},
        {{4, noErr, 0},       {0, 0, 0, 0}, "no memory"},
        {{asRequested, noErr, 2}, {1, 2, 0, 0}, "the count unchanged"},
        {{asRequested, noErr, 0}, {0, 0, 0, 0}, "the count unchanged, no memory"},
        {{2, noErr, 4},       {1, 2, 3, 4}, "more memory than frames: the procedure is called again"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const Converter converter(counts(), counts());
        Script script({fact.step});
        EXPECT_EQ(filled(converter, script, 4), fact.frames) << fact.why;
    }
}

TEST(Fill, IncompleteFramesAreNotRead)
{
    const Converter converter(counts(), counts());
    const auto procedure = [](AudioConverterRef, UInt32*, AudioBufferList* list,
                              AudioStreamPacketDescription**, void*) -> OSStatus {
        static SInt16 samples[] = {5, 6};
        list->mBuffers[0].mData = samples;
        list->mBuffers[0].mDataByteSize = 3;
        return noErr;
    };
    List list(counts(), 2);
    ASSERT_EQ(fill(converter, procedure, nullptr, 2, list), 2u);
    EXPECT_EQ(static_cast<const SInt16*>(list[0].mData)[0], 5);
    EXPECT_EQ(static_cast<const SInt16*>(list[0].mData)[1], 0);
}

TEST(Fill, EachBufferHasItsOwnSize)
{
    const Converter converter(canonical(44100, 2), canonical(44100, 2));
    const auto procedure = [](AudioConverterRef, UInt32*, AudioBufferList* list,
                              AudioStreamPacketDescription**, void* context) -> OSStatus {
        list->mBuffers[1].mData = context;
        list->mBuffers[1].mDataByteSize = 8;
        return noErr;
    };
    float samples[] = {0.25f, 0.5f};
    List list(canonical(44100, 2), 3);
    ASSERT_EQ(fill(converter, procedure, samples, 3, list), 3u);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(static_cast<const float*>(list[0].mData)[i], 0) << i;
    const auto* second = static_cast<const float*>(list[1].mData);
    EXPECT_EQ(second[0], 0.25f);
    EXPECT_EQ(second[1], 0.5f);
    EXPECT_EQ(second[2], 0);
}

// ---- arguments of the input procedure ----

struct Arguments {
    AudioConverterRef converter = nullptr;
    UInt32 packets = 0, buffers = 0;
    std::vector<AudioBuffer> all;
    AudioStreamPacketDescription** descriptions = nullptr;

    static OSStatus procedure(AudioConverterRef converter, UInt32* packets, AudioBufferList* list,
                              AudioStreamPacketDescription** descriptions, void* context)
    {
        Arguments& self = *static_cast<Arguments*>(context);
        self.converter = converter;
        self.packets = *packets;
        self.buffers = list->mNumberBuffers;
        self.all.assign(list->mBuffers, list->mBuffers + list->mNumberBuffers);
        self.descriptions = descriptions;
        // The next call of the procedure must not depend on these changes to its buffer list.
        list->mNumberBuffers = 0;
        for (std::size_t i = 0; i < self.all.size(); ++i) list->mBuffers[i] = {99, 0, nullptr};
        return noErr;
    }
};

TEST(Fill, ProcedureReceivesEmptyBuffersOfTheSourceFormat)
{
    // clang-format off
    const struct { AudioStreamBasicDescription format; UInt32 buffers, channels; } facts[] = {
        {interleaved(44100, 2), 1, 2}, {interleaved(44100, 6), 1, 6}, {canonical(44100, 1), 1, 1}, {canonical(44100, 6), 6, 1},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const Converter converter(fact.format, interleaved(44100, 2));
        List list(interleaved(44100, 2), 16);
        for (int i = 0; i < 2; ++i) {
            Arguments arguments;
            list.restore();
            ASSERT_EQ(fill(converter, Arguments::procedure, &arguments, 16, list), 16u);
            EXPECT_EQ(arguments.converter, static_cast<AudioConverterRef>(converter));
            EXPECT_EQ(arguments.packets, 16u);
            ASSERT_EQ(arguments.buffers, fact.buffers);
            EXPECT_EQ(arguments.descriptions, nullptr);
            for (const AudioBuffer& buffer : arguments.all) {
                EXPECT_EQ(buffer.mNumberChannels, fact.channels);
                EXPECT_EQ(buffer.mDataByteSize, 0u);
                EXPECT_EQ(buffer.mData, nullptr);
            }
        }
    }
}

// ---- output buffers ----

TEST(Fill, CapacityLimitsFramesAndSizesAreWritten)
{
    // clang-format off
    const struct { UInt32 request, capacity[2]; UInt32 made; OSStatus status; const char* why; } facts[] = {
        {10, {40, 40}, 10, noErr,                                "exact"},
        {10, {400, 44}, 10, noErr,                               "larger"},
        {10, {40, 36}, 9,  noErr,                                "the smaller buffer counts"},
        {10, {39, 40}, 9,  noErr,                                "complete frames only"},
        {10, {4, 40},  1,  noErr,                                "one"},
        {10, {3, 40},  10, kAudioConverterErr_InvalidOutputSize, "less than a frame"},
        {10, {40, 0},  10, kAudioConverterErr_InvalidOutputSize, "an empty buffer"},
        {0,  {40, 40}, 0,  noErr,                                "no request"},
        {0,  {0, 0},   0,  noErr,                                "no request, no capacity"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Converter converter(interleaved(44100, 2), canonical(44100, 2));
        Sound sound = soundOf(44100, 2, std::vector<float>(200, 0.5f));
        List list(canonical(44100, 2), 100);
        for (UInt32 i = 0; i < 2; ++i) list[i].mDataByteSize = fact.capacity[i];
        EXPECT_EQ(fill(converter, Sound::procedure, &sound, fact.request, list, fact.status), fact.made);
        for (UInt32 i = 0; i < 2; ++i) {
            EXPECT_EQ(list[i].mDataByteSize, fact.status ? fact.capacity[i] : fact.made * 4);
            if (!fact.status) {
                EXPECT_EQ(list.bytes(i)[fact.made * 4], 0xEE);
            }
        }
        EXPECT_EQ(sound.at, fact.status ? 0 : fact.made);
    }
}

TEST(Fill, MismatchedListsAreRefused)
{
    const Converter converter(interleaved(44100, 2), canonical(44100, 2));
    // clang-format off
    const struct { std::function<void(List&)> spoil; const char* why; } facts[] = {
        {[](List& list) { list->mNumberBuffers = 1; },     "a missing buffer"},
        {[](List& list) { list->mNumberBuffers = 0; },     "no buffer"},
        {[](List& list) { list[1].mNumberChannels = 2; },  "two channels in one"},
        {[](List& list) { list[1].mData = nullptr; },      "no memory"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        Sound sound = soundOf(44100, 2, std::vector<float>(20, 0.5f));
        List list(canonical(44100, 2), 10);
        fact.spoil(list);
        EXPECT_EQ(fill(converter, Sound::procedure, &sound, 10, list, paramErr), 10u) << fact.why;
        EXPECT_EQ(sound.at, 0u) << fact.why;
    }
}

TEST(Fill, MissingPointersAreRefused)
{
    const Converter converter(counts(), counts());
    List list(counts(), 10);
    UInt32 packets = 10;
    Script script({{asRequested}});
    EXPECT_EQ(
        AudioConverterFillComplexBuffer(nullptr, Script::procedure, &script, &packets, list.get(), nullptr),
        paramErr);
    EXPECT_EQ(AudioConverterFillComplexBuffer(converter, nullptr, &script, &packets, list.get(), nullptr),
              paramErr);
    EXPECT_EQ(
        AudioConverterFillComplexBuffer(converter, Script::procedure, &script, nullptr, list.get(), nullptr),
        paramErr);
    EXPECT_EQ(
        AudioConverterFillComplexBuffer(converter, Script::procedure, &script, &packets, nullptr, nullptr),
        paramErr);
    EXPECT_TRUE(script.requests.empty());
}

// The conversion is from big-endian 16-bit stereo to two float buffers. At its end the source returns the
// requested count without memory, which means silence.
TEST(Fill, MixerBlocksToOutputUnitBuffers)
{
    struct Block {
        std::vector<unsigned char> bytes{0x40, 0, 0xC0, 0, 0x20, 0, 0xE0, 0, 0x10, 0, 0xF0, 0};
        UInt32 at = 0;
    } block;
    const auto procedure = [](AudioConverterRef, UInt32* packets, AudioBufferList* list,
                              AudioStreamPacketDescription**, void* context) -> OSStatus {
        Block& source = *static_cast<Block*>(context);
        const UInt32 left = 3 - source.at;
        AudioBuffer& buffer = list->mBuffers[0];
        if (!left) {
            if (buffer.mData) std::memset(buffer.mData, 0, buffer.mDataByteSize);
            return noErr;
        }
        const UInt32 now = std::min(*packets, left);
        buffer = {2, now * 4, source.bytes.data() + source.at * 4};
        source.at += now;
        *packets = now;
        return noErr;
    };
    const Converter converter(pcm(44100, 2, 16, isBig | isSigned | isPacked), canonical(44100, 2));
    List list(canonical(44100, 2), 8);
    ASSERT_EQ(fill(converter, procedure, &block, 8, list), 8u);
    const float left[] = {0.5f, 0.25f, 0.125f, 0, 0, 0, 0, 0};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(static_cast<const float*>(list[0].mData)[i], left[i]) << i;
        EXPECT_EQ(static_cast<const float*>(list[1].mData)[i], -left[i]) << i;
    }
}

} // namespace
