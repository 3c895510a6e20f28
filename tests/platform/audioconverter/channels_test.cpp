// Channel maps, and the routing of channels without a map.
#include "tests/platform/audioconverter/converter.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace test;

/// Make frames in which each sample is its channel's number, from 1.
std::vector<float> numbered(UInt32 channels, UInt32 frames)
{
    std::vector<float> samples;
    for (UInt32 i = 0; i < frames * channels; ++i) samples.push_back(static_cast<float>(i % channels + 1));
    return samples;
}

// clang-format off
const struct { UInt32 from, to; std::vector<SInt32> map; std::vector<float> frame; const char* why; } facts[] = {
    {1, 1, {},          {1},                "one to one"},
    {1, 2, {},          {1, 1},             "one to two: both"},
    {1, 6, {},          {1, 1, 0, 0, 0, 0}, "one to six: the first two"},
    {2, 1, {},          {1},                "the second is dropped"},
    {2, 6, {},          {1, 2, 0, 0, 0, 0}, "two to six: the first two"},
    {6, 2, {},          {1, 2},             "six to two: four are dropped"},
    {6, 6, {},          {1, 2, 3, 4, 5, 6}, "each to itself"},
    {3, 3, {},          {1, 2, 3},          "each to itself"},
    {2, 2, {1, 0},      {2, 1},             "swapped"},
    {2, 2, {-1, 0},     {0, 1},             "one silent"},
    {1, 2, {-1, 0},     {0, 1},             "a map replaces the rule"},
    {2, 3, {1, 1, 1},   {2, 2, 2},          "one to all"},
    {6, 2, {5, 4},      {6, 5},             "the last two"},
    {2, 2, {0, 2},      {1, 0},             "a missing channel is silent"},
    {2, 2, {0, 1},      {1, 2},             "a map equal to the rule"},
};
// clang-format on

TEST(Channels, FollowRuleOrMap)
{
    for (const auto& fact : facts)
        for (int apart = 0; apart < 2; ++apart) {
            SCOPED_TRACE(fact.why);
            const auto to = apart ? canonical(44100, fact.to) : interleaved(44100, fact.to);
            const Converter converter(interleaved(44100, fact.from), to);
            const UInt32 mapBytes = static_cast<UInt32>(fact.map.size() * sizeof(SInt32));
            if (!fact.map.empty()) {
                ASSERT_EQ(AudioConverterSetProperty(converter, 'chmp', mapBytes, fact.map.data()), noErr);
            }
            Sound sound = soundOf(44100, fact.from, numbered(fact.from, 9));
            List list(to, 9);
            ASSERT_EQ(fill(converter, Sound::procedure, &sound, 9, list), 9u);
            for (UInt32 frame = 0; frame < 9; ++frame)
                for (UInt32 c = 0; c < fact.to; ++c) {
                    const auto* samples = static_cast<const float*>(list[apart ? c : 0].mData);
                    EXPECT_EQ(samples[apart ? frame : frame * fact.to + c], fact.frame[c])
                        << frame << ", " << c;
                }
        }
}

TEST(Channels, FollowRuleOrMapAtAnotherRate)
{
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const Converter converter(interleaved(44100, fact.from), interleaved(48000, fact.to));
        const UInt32 mapBytes = static_cast<UInt32>(fact.map.size() * sizeof(SInt32));
        if (!fact.map.empty()) {
            ASSERT_EQ(AudioConverterSetProperty(converter, 'chmp', mapBytes, fact.map.data()), noErr);
        }
        Sound sound = soundOf(44100, fact.from, numbered(fact.from, 2000));
        const std::vector<float> out = drained(converter, sound, fact.to, 500);
        const std::size_t middle = out.size() / fact.to / 2;
        for (UInt32 c = 0; c < fact.to; ++c)
            EXPECT_NEAR(out[middle * fact.to + c], fact.frame[c], fact.frame[c] != 0 ? 1e-3 : 0) << c;
    }
}

TEST(Channels, SilenceInEverySampleFormat)
{
    // clang-format off
    const struct { UInt32 bits, flags; std::vector<unsigned char> silence; } kinds[] = {
        {8,  isPacked,                    {0x80}},
        {8,  isPacked | isSigned,         {0}},
        {16, isPacked,                    {0, 0x80}},
        {16, isPacked | isBig,            {0x80, 0}},
        {32, isPacked | isFloat,          {0, 0, 0, 0}},
        {24, isPacked | isBig,            {0x80, 0, 0}},
    };
    // clang-format on
    for (const auto& kind : kinds) {
        const auto to = pcm(44100, 3, kind.bits, kind.flags);
        const Converter converter(interleaved(44100, 1), to);
        Sound sound = soundOf(44100, 1, {0.5f});
        List list(to, 1);
        ASSERT_EQ(fill(converter, Sound::procedure, &sound, 1, list), 1u);
        const std::vector<unsigned char> third(list.bytes(0) + 2 * kind.silence.size(),
                                               list.bytes(0) + 3 * kind.silence.size());
        EXPECT_EQ(third, kind.silence) << kind.bits << " bits, flags " << kind.flags;
    }
}

} // namespace
