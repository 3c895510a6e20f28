// Filling: an input procedure that gives less, more, nothing, or fails.
#include "tests/platform/audioconverter/converter.h"

#include <Carbon/Carbon.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

namespace {

using namespace test;

constexpr UInt32 asAsked = ~UInt32{0};

/// What one call of the input procedure does.
struct Step {
    UInt32 packets;
    OSStatus status = noErr;
    UInt32 covered = asAsked; // packets that mDataByteSize says; none: no memory either
};

/// Counts: 16-bit frames 1, 2, 3, … in one channel, given as the steps say; the last step repeats.
struct Script {
    explicit Script(std::vector<Step> s) : steps(std::move(s))
    {
        for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<SInt16>(i + 1);
    }
    static OSStatus procedure(AudioConverterRef, UInt32* packets, AudioBufferList* list,
                              AudioStreamPacketDescription**, void* context)
    {
        Script& self = *static_cast<Script*>(context);
        self.asked.push_back(*packets);
        const Step step = self.steps[std::min(self.asked.size(), self.steps.size()) - 1];
        if (step.packets != asAsked) *packets = step.packets;
        const UInt32 covered = step.covered == asAsked ? *packets : step.covered;
        list->mBuffers[0].mData = covered ? self.memory.data() + self.next : nullptr;
        list->mBuffers[0].mDataByteSize = covered * 2;
        self.next += *packets;
        return step.status;
    }
    std::vector<Step> steps;
    std::vector<UInt32> asked;
    std::vector<SInt16> memory = std::vector<SInt16>(1000);
    UInt32 next = 0;
};

AudioStreamBasicDescription counts() { return pcm(44100, 1, 16, isSigned | isPacked); }

/// The frames that a fill of up to `frames` gives.
std::vector<int> filled(AudioConverterRef converter, Script& script, UInt32 frames, OSStatus status = noErr)
{
    List list(counts(), frames + 1);
    const UInt32 got = fill(converter, Script::procedure, &script, frames, list, status);
    EXPECT_LE(got, frames);
    EXPECT_EQ(list[0].mDataByteSize, got * 2);
    EXPECT_EQ(list.bytes(0)[got * 2], 0xEE) << "nothing behind what was made";
    const auto* samples = static_cast<const SInt16*>(list[0].mData);
    return {samples, samples + got};
}

std::vector<int> range(int first, int last)
{
    std::vector<int> all;
    for (int i = first; i <= last; ++i) all.push_back(i);
    return all;
}

using Asked = std::vector<UInt32>;

TEST(Fill, LessThanAskedIsAskedForAgain)
{
    const Converter converter(counts(), counts());
    Script script({{3}});
    EXPECT_EQ(filled(converter, script, 10), range(1, 10));
    EXPECT_EQ(script.asked, (Asked{10, 7, 4, 1}));
    EXPECT_EQ(filled(converter, script, 4), range(11, 14)) << "two were kept";
    EXPECT_EQ(script.asked, (Asked{10, 7, 4, 1, 2}));
}

TEST(Fill, MoreThanAskedIsKeptWhereItStands)
{
    const Converter converter(counts(), counts());
    Script script({{100}, {0}});
    EXPECT_EQ(filled(converter, script, 10), range(1, 10));
    script.memory[10] = 777; // the procedure's memory is read when its turn comes
    EXPECT_EQ(filled(converter, script, 1), (std::vector<int>{777}));
    EXPECT_EQ(filled(converter, script, 80), range(12, 91));
    EXPECT_EQ(script.asked, (Asked{10}));
    EXPECT_EQ(filled(converter, script, 50), range(92, 100));
    EXPECT_EQ(script.asked, (Asked{10, 41}));
}

TEST(Fill, NothingIsTheEndUntilAReset)
{
    const Converter converter(counts(), counts());
    Script script({{4}, {0}, {asAsked}});
    EXPECT_EQ(filled(converter, script, 10), range(1, 4));
    EXPECT_EQ(script.asked.size(), 2u);
    EXPECT_EQ(filled(converter, script, 10), range(1, 0));
    EXPECT_EQ(filled(converter, script, 10), range(1, 0));
    EXPECT_EQ(script.asked.size(), 2u) << "it is asked no more";
    EXPECT_EQ(AudioConverterReset(converter), noErr);
    EXPECT_EQ(filled(converter, script, 3), range(5, 7));
}

TEST(Fill, AResetForgetsWhatWasKept)
{
    const Converter converter(counts(), counts());
    Script script({{100}});
    EXPECT_EQ(filled(converter, script, 10), range(1, 10));
    EXPECT_EQ(AudioConverterReset(converter), noErr);
    EXPECT_EQ(filled(converter, script, 3), range(101, 103));
}

TEST(Fill, NothingAndAnErrorIsNoneForNow)
{
    const Converter converter(counts(), counts());
    Script script({{4}, {0, 'none'}, {0, 'none'}, {asAsked}});
    EXPECT_EQ(filled(converter, script, 10, 'none'), range(1, 4));
    EXPECT_EQ(filled(converter, script, 10, 'none'), range(1, 0));
    EXPECT_EQ(filled(converter, script, 10), range(5, 14));
}

TEST(Fill, PacketsThatComeWithAnErrorAreKept)
{
    const Converter converter(counts(), counts());
    Script script({{4}, {5, 'odd '}, {asAsked}});
    EXPECT_EQ(filled(converter, script, 10, 'odd '), range(1, 4));
    EXPECT_EQ(filled(converter, script, 8), range(5, 12));
    EXPECT_EQ(script.asked, (Asked{10, 6, 3}));
}

TEST(Fill, WhatBuffersDoNotCoverIsSilence)
{
    const std::vector<int> silence(4, 0);
    // clang-format off
    const struct { Step step; std::vector<int> frames; const char* why; } facts[] = {
        {{4, noErr, 4},       {1, 2, 3, 4}, "all of it"},
        {{4, noErr, 3},       {1, 2, 3, 0}, "one frame short"},
        {{4, noErr, 0},       {0, 0, 0, 0}, "no memory"},
        {{asAsked, noErr, 2}, {1, 2, 0, 0}, "the count as it was"},
        {{asAsked, noErr, 0}, {0, 0, 0, 0}, "the count as it was, and no memory"},
        {{2, noErr, 4},       {1, 2, 3, 4}, "more memory than packets: the next two come with the next call"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const Converter converter(counts(), counts());
        Script script({fact.step});
        EXPECT_EQ(filled(converter, script, 4), fact.frames) << fact.why;
    }
}

TEST(Fill, AFrameThatIsNotWholeIsNotRead)
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

TEST(Fill, EachBufferIsJudgedByItself)
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

// ---- what arrives at the procedure ----

struct Arrived {
    AudioConverterRef converter = nullptr;
    UInt32 packets = 0, buffers = 0;
    std::vector<AudioBuffer> all;
    AudioStreamPacketDescription** descriptions = nullptr;

    static OSStatus procedure(AudioConverterRef converter, UInt32* packets, AudioBufferList* list,
                              AudioStreamPacketDescription** descriptions, void* context)
    {
        Arrived& self = *static_cast<Arrived*>(context);
        self.converter = converter;
        self.packets = *packets;
        self.buffers = list->mNumberBuffers;
        self.all.assign(list->mBuffers, list->mBuffers + list->mNumberBuffers);
        self.descriptions = descriptions;
        // What a careless client leaves behind must not matter for the next call.
        list->mNumberBuffers = 0;
        for (std::size_t i = 0; i < self.all.size(); ++i) list->mBuffers[i] = {99, 0, nullptr};
        return noErr;
    }
};

TEST(Fill, TheProcedureGetsEmptyBuffersInTheSourcesShape)
{
    // clang-format off
    const struct { AudioStreamBasicDescription format; UInt32 buffers, channels; } facts[] = {
        {interleaved(44100, 2), 1, 2}, {interleaved(44100, 6), 1, 6}, {canonical(44100, 1), 1, 1}, {canonical(44100, 6), 6, 1},
    };
    // clang-format on
    for (const auto& fact : facts) {
        const Converter converter(fact.format, interleaved(44100, 2));
        List list(interleaved(44100, 2), 16);
        for (int turn = 0; turn < 2; ++turn) {
            Arrived arrived;
            list.restore();
            ASSERT_EQ(fill(converter, Arrived::procedure, &arrived, 16, list), 16u);
            EXPECT_EQ(arrived.converter, static_cast<AudioConverterRef>(converter));
            EXPECT_EQ(arrived.packets, 16u);
            ASSERT_EQ(arrived.buffers, fact.buffers);
            EXPECT_EQ(arrived.descriptions, nullptr);
            for (const AudioBuffer& buffer : arrived.all) {
                EXPECT_EQ(buffer.mNumberChannels, fact.channels);
                EXPECT_EQ(buffer.mDataByteSize, 0u);
                EXPECT_EQ(buffer.mData, nullptr);
            }
        }
    }
}

// ---- the output's buffers ----

TEST(Fill, RoomShortensAndSizesAreWritten)
{
    // clang-format off
    const struct { UInt32 wanted, room[2]; UInt32 made; OSStatus status; const char* why; } facts[] = {
        {10, {40, 40}, 10, noErr,                                "just enough"},
        {10, {400, 44}, 10, noErr,                               "more than enough"},
        {10, {40, 36}, 9,  noErr,                                "the smaller counts"},
        {10, {39, 40}, 9,  noErr,                                "whole frames"},
        {10, {4, 40},  1,  noErr,                                "one"},
        {10, {3, 40},  10, kAudioConverterErr_InvalidOutputSize, "none"},
        {10, {40, 0},  10, kAudioConverterErr_InvalidOutputSize, "none there"},
        {0,  {40, 40}, 0,  noErr,                                "nothing wanted"},
        {0,  {0, 0},   0,  noErr,                                "nothing wanted, nothing needed"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Converter converter(interleaved(44100, 2), canonical(44100, 2));
        Sound sound = soundOf(44100, 2, std::vector<float>(200, 0.5f));
        List list(canonical(44100, 2), 100);
        for (UInt32 i = 0; i < 2; ++i) list[i].mDataByteSize = fact.room[i];
        EXPECT_EQ(fill(converter, Sound::procedure, &sound, fact.wanted, list, fact.status), fact.made);
        for (UInt32 i = 0; i < 2; ++i) {
            EXPECT_EQ(list[i].mDataByteSize, fact.status ? fact.room[i] : fact.made * 4);
            if (!fact.status) {
                EXPECT_EQ(list.bytes(i)[fact.made * 4], 0xEE);
            }
        }
        EXPECT_EQ(sound.at, fact.status ? 0 : fact.made);
    }
}

TEST(Fill, AListOfAnotherShapeIsRefused)
{
    const Converter converter(interleaved(44100, 2), canonical(44100, 2));
    // clang-format off
    const struct { std::function<void(List&)> spoil; const char* why; } facts[] = {
        {[](List& list) { list->mNumberBuffers = 1; },     "a buffer less"},
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
    Script script({{asAsked}});
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
    EXPECT_TRUE(script.asked.empty());
}

// Big-endian 16-bit pairs into two buffers of float, from a source that has some, less, then none: what is
// left as it was asked is silence.
TEST(Fill, AMixersBlocksIntoAnOutputUnitsBuffers)
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
