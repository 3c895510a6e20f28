// Tests the converter unit between two sample rates.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/unit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace {

using namespace test;

constexpr double pi = 3.14159265358979323846;
Float64 sourceRate = 44100; // sample rate of the tone

float tone(Float64 frame, UInt32 channel)
{
    return static_cast<float>(std::sin(2 * pi * 1000 * frame / sourceRate + channel));
}

struct Converter {
    Converter(Float64 from, Float64 to, UInt32 limit = 1156, UInt32 sources = 2, UInt32 channels = 2)
        : unit('conv', 'aufc'), feeder(interleaved(from, sources), tone), format(canonical(to, channels)),
          list(format, limit)
    {
        sourceRate = from;
        EXPECT_EQ(unit.setFormat(1, interleaved(from, sources)), noErr);
        EXPECT_EQ(unit.setFormat(2, format), noErr);
        EXPECT_EQ(unit.setLimit(limit), noErr);
        EXPECT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    }
    /// Render the next slice. Returns the samples of channel `c`.
    std::vector<float> next(UInt32 frames, UInt32 c = 0)
    {
        list.restore();
        const AudioTimeStamp time = sampleTime(at);
        EXPECT_EQ(AudioUnitRender(unit, &flags, &time, 0, frames, list.get()), noErr);
        at += frames;
        const auto* samples = static_cast<const float*>(list[c].mData);
        return {samples, samples + frames};
    }
    Unit unit;
    Feeder feeder;
    AudioStreamBasicDescription format;
    List list;
    Float64 at = 0;
    AudioUnitRenderActionFlags flags = 0;
};

TEST(ConverterUnitRate, KeepsTheTimeOfATone)
{
    // clang-format off
    const struct { Float64 from, to; double bound; } facts[] = {
        {44100, 48000, 1e-4}, {48000, 44100, 1e-4}, {44100, 22050, 1e-4}, {8000, 192000, 1e-4}, {192000, 8000, 1e-3},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const UInt32 slice : {1u, 37u, 512u, 1156u}) {
            Converter converter(fact.from, fact.to);
            ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
            double worst = 0;
            std::size_t frame = 0;
            while (frame < 6000)
                for (const float sample : converter.next(slice, 1)) {
                    const double expected =
                        std::sin(2 * pi * 1000 * static_cast<double>(frame) / fact.to + 1);
                    if (frame > 3000) worst = std::max(worst, std::abs(sample - expected));
                    ++frame;
                }
            EXPECT_LT(worst, fact.bound) << fact.from << " to " << fact.to << " by " << slice;
        }
}

TEST(ConverterUnitRate, OutputDoesNotDependOnSlices)
{
    std::vector<float> whole;
    for (const UInt32 slice : {4000u, 1u, 512u, 999u}) {
        Converter converter(44100, 48000, 4000);
        ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
        std::vector<float> all;
        while (all.size() < 4000) {
            const auto more = converter.next(std::min<UInt32>(slice, 4000 - static_cast<UInt32>(all.size())));
            all.insert(all.end(), more.begin(), more.end());
        }
        if (whole.empty()) whole = all;
        EXPECT_TRUE(all == whole) << slice;
    }
}

TEST(ConverterUnitRate, InputLimitIsScaledByTheRates)
{
    // clang-format off
    const struct { Float64 from, to; UInt32 limit, most; } facts[] = {
        {44100,  48000, 1156, 1063}, {48000, 44100, 1156, 1259}, {88200, 44100, 512, 1024}, {44100, 88200, 512, 256},
        {256000, 1000,  10,   2560}, {1000, 256000, 10,   1},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.from) + " to " + std::to_string(fact.to));
        Converter converter(fact.from, fact.to, fact.limit);
        ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
        Float64 expected = 0;
        for (int slice = 0; slice < 5; ++slice) converter.next(fact.limit);
        UInt32 largest = 0;
        for (const Request& request : converter.feeder.requests) {
            largest = std::max(largest, request.frames);
            EXPECT_EQ(request.time.mSampleTime, expected) << "the source's time has no gap";
            EXPECT_EQ(request.bytes, request.frames * 8);
            expected += request.frames;
        }
        EXPECT_EQ(largest, fact.most);
        const double needed = 5 * fact.limit * fact.from / fact.to;
        EXPECT_GE(expected, std::floor(needed));
        EXPECT_LE(expected, needed + converter.unit.get<Float64>(20, 0, 0) * fact.from + 1)
            << "no further ahead than the look-ahead";
    }
}

TEST(ConverterUnitRate, ConvertsBetweenChannelCounts)
{
    for (const UInt32 sources : {1u, 2u, 6u})
        for (const UInt32 channels : {1u, 2u, 6u}) {
            SCOPED_TRACE(std::to_string(sources) + " to " + std::to_string(channels));
            Converter converter(44100, 48000, 2048, sources, channels);
            ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
            converter.next(2048);
            for (UInt32 c = 0; c < channels; ++c) {
                const int source = sources == 1 ? (c < 2 ? 0 : -1) : c < sources ? static_cast<int>(c) : -1;
                const auto* samples = static_cast<const float*>(converter.list[c].mData);
                for (UInt32 i = 500; i < 1500; ++i)
                    ASSERT_NEAR(samples[i], source < 0 ? 0 : std::sin(2 * pi * 1000 * i / 48000 + source),
                                source < 0 ? 0 : 1e-4)
                        << c << ", " << i;
            }
        }
}

TEST(ConverterUnitRate, SourceTimeContinuesAfterAReset)
{
    Converter converter(44100, 48000);
    ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
    const auto first = converter.next(500);
    const Float64 pulled =
        converter.feeder.requests.back().time.mSampleTime + converter.feeder.requests.back().frames;
    converter.next(333);
    ASSERT_EQ(AudioUnitReset(converter.unit, 0, 0), noErr);
    converter.feeder.requests.clear();
    converter.next(10);
    EXPECT_GT(converter.feeder.requests.at(0).time.mSampleTime, pulled) << "the source's time continues";

    ASSERT_EQ(AudioUnitUninitialize(converter.unit), noErr);
    ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
    EXPECT_TRUE(converter.next(500) == first);
}

TEST(ConverterUnitRate, QualityChangesWhileRendering)
{
    Converter converter(44100, 48000);
    ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
    converter.next(500);
    // clang-format off
    const struct { AudioUnitPropertyID id; UInt32 value; } changes[] = {{3014, 'bats'}, {26, 0}, {3014, 'norm'}, {26, 127}, {3014, 'line'}};
    // clang-format on
    for (const auto& change : changes) {
        ASSERT_EQ(converter.unit.set(change.id, 0, 0, change.value), noErr);
        double worst = 0;
        const Float64 from = converter.at;
        std::vector<float> samples = converter.next(1156);
        // The tone continues after the change, but its phase may differ.
        float loudest = 0;
        for (std::size_t i = 400; i < 800; ++i) loudest = std::max(loudest, std::abs(samples[i]));
        EXPECT_NEAR(loudest, 1, 0.01) << change.id;
        for (std::size_t i = 400; i + 48 < 800; ++i)
            worst = std::max<double>(worst, std::abs(samples[i] - samples[i + 48]));
        EXPECT_LT(worst, 4e-3) << "1000 Hz has a period of 48 frames";
        EXPECT_EQ(converter.at, from + 1156);
    }
}

OSStatus silent(void*, AudioUnitRenderActionFlags* flags, const AudioTimeStamp*, UInt32, UInt32,
                AudioBufferList* list)
{
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i)
        std::fill_n(static_cast<unsigned char*>(list->mBuffers[i].mData), list->mBuffers[i].mDataByteSize, 0);
    *flags |= kAudioUnitRenderAction_OutputIsSilence;
    return noErr;
}

// The filter still rings after its source has become silent.
TEST(ConverterUnitRate, RingingFilterIsNotFlaggedSilent)
{
    Converter converter(44100, 48000);
    ASSERT_EQ(AudioUnitInitialize(converter.unit), noErr);
    converter.next(300);
    ASSERT_EQ(converter.unit.setCallback(silent, nullptr), noErr);
    const std::vector<float> after = converter.next(1156);
    EXPECT_FALSE(converter.flags & kAudioUnitRenderAction_OutputIsSilence);
    EXPECT_GT(std::abs(after[10]), 0.1) << "input pulled ahead";
    EXPECT_NEAR(after[1000], 0, 1e-6);
}

TEST(ConverterUnitRate, RefusesRatesTooFarApart)
{
    // clang-format off
    const struct { Float64 from, to; UInt32 channels; OSStatus status; } facts[] = {
        {1000, 256000, 2, noErr},   {1000, 257000, 2, kAudioUnitErr_FormatNotSupported},
        {256000, 1000, 2, noErr},   {257000, 1000, 2, kAudioUnitErr_FormatNotSupported},
        {44100, 48000, 128, noErr}, {44100, 48000, 129, kAudioUnitErr_FormatNotSupported},
        {44100, 44100, 1024, noErr},
    };
    // clang-format on
    for (const auto& fact : facts) {
        Converter converter(fact.from, fact.to, 64, fact.channels, fact.channels);
        EXPECT_EQ(AudioUnitInitialize(converter.unit), fact.status) << fact.from << " to " << fact.to;
        if (fact.status) {
            EXPECT_EQ(AudioUnitRender(converter.unit, nullptr, nullptr, 0, 1, nullptr), -50);
        } else {
            converter.next(64);
        }
    }
}

TEST(ConverterUnitRate, RefusesSlicesLargerThanMemory)
{
    Converter converter(256000, 1000, 64, 2, 2);
    ASSERT_EQ(converter.unit.setLimit(0x7FFFFFFF), noErr);
    EXPECT_EQ(AudioUnitInitialize(converter.unit), memFullErr);
    ASSERT_EQ(converter.unit.setLimit(64), noErr);
    EXPECT_EQ(AudioUnitInitialize(converter.unit), noErr);
}

} // namespace
