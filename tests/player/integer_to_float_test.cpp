// The adding methods convert integer samples of every bit size to exact floats.
#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

using test::Memory;
using test::PlayerObject;
using Bytes = std::vector<unsigned char>;

class PlayerConversion : public test::FreshPlatform {
protected:
    /// Return the floats that "AddAudio" queues for the sample bytes `bytes`.
    static std::vector<float> converted(const Bytes& bytes, HostInteger bitSize, HostInteger offset = 0,
                                        HostInteger count = 0)
    {
        const PlayerObject object;
        const test::Block block(bytes);
        const bool added = test::members.call<HostBoolean>("AddAudio", object, static_cast<Memory>(block),
                                                           offset, count, bitSize, HostBoolean{0});
        EXPECT_EQ(added, object->queueCount == 1);
        return object.slot(0);
    }

    static std::uint32_t bits(float value)
    {
        std::uint32_t pattern;
        std::memcpy(&pattern, &value, sizeof pattern);
        return pattern;
    }
};

constexpr float two(int exponent)
{
    float value = 1;
    for (; exponent < 0; ++exponent) value /= 2;
    for (; exponent > 0; --exponent) value *= 2;
    return value;
}

// clang-format off
const struct {
    HostInteger bitSize;
    Bytes bytes; // bytes of one sample in memory order, on this little-endian processor
    float value;
    const char* why;
} facts[] = {
    {  7, {0x80},                   -1.0f,                          "the lowest; odd sizes are signed" },
    {  7, {0x81},                   -127 * two(-7),                 "one above the lowest" },
    {  7, {0xFF},                   -two(-7),                       "minus one" },
    {  7, {0x00},                   0.0f,                           "zero" },
    {  7, {0x01},                   two(-7),                        "one" },
    {  7, {0x40},                   0.5f,                           "the middle of the upper half" },
    {  7, {0x7F},                   127 * two(-7),                  "the highest" },

    {  8, {0x00},                   0.0f,                           "even sizes are unsigned and not re-centred" },
    {  8, {0x01},                   two(-8),                        "one" },
    {  8, {0x7F},                   127 * two(-8),                  "below the middle" },
    {  8, {0x80},                   0.5f,                           "the middle" },
    {  8, {0xFF},                   255 * two(-8),                  "the highest stays below 1" },

    { 15, {0x00, 0x80},             -1.0f,                          "the lowest" },
    { 15, {0x01, 0x80},             -32767 * two(-15),              "one above the lowest" },
    { 15, {0xFF, 0xFF},             -two(-15),                      "minus one" },
    { 15, {0x00, 0x00},             0.0f,                           "zero" },
    { 15, {0x01, 0x00},             two(-15),                       "one: the low byte comes first" },
    { 15, {0x00, 0x40},             0.5f,                           "the middle of the upper half" },
    { 15, {0xFF, 0x7F},             32767 * two(-15),               "the highest" },

    { 16, {0x00, 0x00},             0.0f,                           "zero" },
    { 16, {0x01, 0x00},             two(-16),                       "one" },
    { 16, {0xFF, 0x7F},             32767 * two(-16),               "below the middle" },
    { 16, {0x00, 0x80},             0.5f,                           "the middle" },
    { 16, {0xFF, 0xFF},             65535 * two(-16),               "the highest, just under 1" },

    { 24, {0x00, 0x00, 0x00},       0.0f,                           "zero" },
    { 24, {0x00, 0x00, 0x01},       two(-24),                       "one: 24 bits are always big-endian" },
    { 24, {0x00, 0x01, 0x00},       two(-16),                       "the middle byte" },
    { 24, {0x01, 0x00, 0x00},       two(-8),                        "the high byte" },
    { 24, {0x7F, 0xFF, 0xFF},       8388607 * two(-24),             "below the middle, exactly" },
    { 24, {0x80, 0x00, 0x00},       0.5f,                           "the middle: unsigned" },
    { 24, {0x80, 0x00, 0x01},       8388609 * two(-24),             "above the middle, exactly" },
    { 24, {0xFF, 0xFF, 0xFE},       16777214 * two(-24),            "one below the highest" },
    { 24, {0xFF, 0xFF, 0xFF},       16777215 * two(-24),            "the highest: fits a float's mantissa" },

    { 31, {0x00, 0x00, 0x00, 0x80}, -1.0f,                          "the lowest" },
    { 31, {0x01, 0x00, 0x00, 0x80}, -1.0f,                          "one above the lowest rounds to the nearest float" },
    { 31, {0xFF, 0xFF, 0xFF, 0xFF}, -two(-31),                      "minus one" },
    { 31, {0x00, 0x00, 0x00, 0x00}, 0.0f,                           "zero" },
    { 31, {0x01, 0x00, 0x00, 0x00}, two(-31),                       "one" },
    { 31, {0x00, 0x00, 0x00, 0x01}, two(-7),                        "2^24" },
    { 31, {0x01, 0x00, 0x00, 0x01}, two(-7),                        "2^24 + 1 lies between two floats: rounds to even, down" },
    { 31, {0x02, 0x00, 0x00, 0x01}, 16777218 * two(-31),            "2^24 + 2 is a float" },
    { 31, {0x03, 0x00, 0x00, 0x01}, 16777220 * two(-31),            "2^24 + 3 rounds to even, up" },
    { 31, {0xFF, 0xFF, 0xFF, 0xFE}, -two(-7),                       "-2^24 - 1 rounds to even" },
    { 31, {0xFD, 0xFF, 0xFF, 0xFE}, -16777220 * two(-31),           "-2^24 - 3 rounds to even" },
    { 31, {0xBF, 0xFF, 0xFF, 0x7F}, 16777215 * two(-24),            "2^31 - 65: the last that stays below 1" },
    { 31, {0xC0, 0xFF, 0xFF, 0x7F}, 1.0f,                           "2^31 - 64: a tie, rounds to even, up to 1" },
    { 31, {0xFF, 0xFF, 0xFF, 0x7F}, 1.0f,                           "the highest rounds to 1" },

    { 32, {0x00, 0x00, 0x00, 0x00}, 0.0f,                           "zero" },
    { 32, {0x01, 0x00, 0x00, 0x00}, two(-32),                       "one" },
    { 32, {0x01, 0x00, 0x00, 0x01}, two(-8),                        "2^24 + 1 rounds to even, down" },
    { 32, {0x03, 0x00, 0x00, 0x01}, 16777220 * two(-32),            "2^24 + 3 rounds to even, up" },
    { 32, {0xFF, 0xFF, 0xFF, 0x7F}, 0.5f,                           "2^31 - 1 rounds to the middle" },
    { 32, {0x00, 0x00, 0x00, 0x80}, 0.5f,                           "the middle: unsigned" },
    { 32, {0x80, 0x00, 0x00, 0x80}, 0.5f,                           "2^31 + 128: a tie, rounds to even, down" },
    { 32, {0x81, 0x00, 0x00, 0x80}, 8388609 * two(-24),             "2^31 + 129: past the tie, rounded once" },
    { 32, {0x7F, 0xFF, 0xFF, 0xFF}, 16777215 * two(-24),            "2^32 - 129: the last that stays below 1" },
    { 32, {0x80, 0xFF, 0xFF, 0xFF}, 1.0f,                           "2^32 - 128: a tie, up to 1" },
    { 32, {0xFF, 0xFF, 0xFF, 0xFF}, 1.0f,                           "the highest rounds to 1" },
};
// clang-format on

TEST_F(PlayerConversion, ConvertsEachSampleToItsExactFloat)
{
    for (const auto& fact : facts) {
        SCOPED_TRACE(::testing::Message() << fact.bitSize << " bits: " << fact.why);
        const std::vector<float> floats = converted(fact.bytes, fact.bitSize);
        ASSERT_EQ(floats.size(), 1u);
        EXPECT_EQ(bits(floats[0]), bits(fact.value)) << floats[0] << " for " << fact.value;
    }
}

TEST_F(PlayerConversion, ConvertsEverySampleOf8Bits)
{
    Bytes all;
    for (int i = 0; i < 256; ++i) all.push_back(static_cast<unsigned char>(i));
    const std::vector<float> isSigned = converted(all, 7), isUnsigned = converted(all, 8);
    ASSERT_EQ(isSigned.size(), 256u);
    ASSERT_EQ(isUnsigned.size(), 256u);
    for (int i = 0; i < 256; ++i) {
        const auto at = static_cast<std::size_t>(i);
        EXPECT_EQ(isSigned[at], static_cast<float>(i < 128 ? i : i - 256) / 128) << i;
        EXPECT_EQ(isUnsigned[at], static_cast<float>(i) / 256) << i;
    }
}

TEST_F(PlayerConversion, ConvertsEverySampleOf16Bits)
{
    Bytes all;
    for (int i = 0; i < 65536; ++i) {
        all.push_back(static_cast<unsigned char>(i));
        all.push_back(static_cast<unsigned char>(i >> 8));
    }
    const std::vector<float> isSigned = converted(all, 15), isUnsigned = converted(all, 16);
    ASSERT_EQ(isSigned.size(), 65536u);
    ASSERT_EQ(isUnsigned.size(), 65536u);
    for (int i = 0; i < 65536; ++i) {
        const auto at = static_cast<std::size_t>(i);
        ASSERT_EQ(isSigned[at], static_cast<float>(i < 32768 ? i : i - 65536) / 32768) << i;
        ASSERT_EQ(isUnsigned[at], static_cast<float>(i) / 65536) << i;
    }
}

TEST_F(PlayerConversion, ConvertsASeriesOfSamplesOf24And32Bits)
{
    // This step gives about 260 values over the whole range. The lowest and the highest byte take all 256
    // values.
    Bytes bytes24, bytes32;
    std::vector<float> expected24, expected31, expected32;
    for (std::uint64_t value = 0; value <= 0xFFFFFFFF; value += 0x00FD03F7) {
        const auto word = static_cast<std::uint32_t>(value);
        for (int shift = 0; shift < 32; shift += 8)
            bytes32.push_back(static_cast<unsigned char>(word >> shift));
        for (int shift = 24; shift > 0; shift -= 8)
            bytes24.push_back(static_cast<unsigned char>(word >> shift));
        // A double represents each 32-bit value exactly, so only the conversion to float rounds.
        expected24.push_back(std::ldexp(static_cast<float>(static_cast<double>(word >> 8)), -24));
        expected32.push_back(std::ldexp(static_cast<float>(static_cast<double>(word)), -32));
        const double asSigned = static_cast<double>(word) - (word >> 31 ? 4294967296.0 : 0.0);
        expected31.push_back(std::ldexp(static_cast<float>(asSigned), -31));
    }
    ASSERT_GT(expected24.size(), 250u);
    EXPECT_EQ(converted(bytes24, 24), expected24);
    EXPECT_EQ(converted(bytes32, 31), expected31);
    EXPECT_EQ(converted(bytes32, 32), expected32);
}

// ---- counts and offsets ----

const struct {
    HostInteger bitSize, bytes, samples;
} remainders[] = {
    {16, 6, 3}, {16, 5, 2}, {16, 3, 1}, {16, 2, 1}, {15, 7, 3}, {8, 5, 5},  {7, 1, 1},   {24, 3, 1},
    {24, 5, 1}, {24, 6, 2}, {24, 8, 2}, {32, 4, 1}, {32, 7, 1}, {31, 8, 2}, {31, 11, 2},
};

TEST_F(PlayerConversion, IgnoresBytesAfterTheLastWholeSample)
{
    for (const auto& row : remainders) {
        SCOPED_TRACE(::testing::Message() << row.bytes << " bytes of " << row.bitSize << " bits");
        const Bytes bytes(static_cast<std::size_t>(row.bytes), 1);
        EXPECT_EQ(static_cast<HostInteger>(converted(bytes, row.bitSize).size()), row.samples);
    }
}

TEST_F(PlayerConversion, StartsAtTheOffsetAtAnyAlignment)
{
    for (const HostInteger bitSize : {7, 8, 15, 16, 24, 31, 32}) {
        const Bytes samples = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0, 0x11, 0x22, 0x33, 0x44};
        const std::vector<float> expected = converted(samples, bitSize);
        for (HostInteger offset = 0; offset < 9; ++offset) {
            SCOPED_TRACE(::testing::Message() << bitSize << " bits at " << offset);
            Bytes shifted(static_cast<std::size_t>(offset), 0xEE);
            shifted.insert(shifted.end(), samples.begin(), samples.end());
            EXPECT_EQ(converted(shifted, bitSize, offset, static_cast<HostInteger>(samples.size())),
                      expected);
        }
    }
}

TEST_F(PlayerConversion, InterleavesTwoBlocks)
{
    const PlayerObject object;
    const test::Block left(Bytes{0xEE, 0x00, 0x80, 0x00, 0x40, 0x00, 0x20}),
        right(Bytes{0xEE, 0xFF, 0xFF, 0x01, 0x00, 0x00, 0x10});
    ASSERT_TRUE(test::members.call<HostBoolean>("AddAudioStereo", object, static_cast<Memory>(left),
                                                static_cast<Memory>(right), HostInteger{1}, HostInteger{6},
                                                HostInteger{16}, HostBoolean{0}));
    EXPECT_EQ(object.slot(0), (std::vector<float>{0.5f, 65535 * two(-16), 0.25f, two(-16), 0.125f, 0.0625f}));
    EXPECT_EQ(object->queue[0].count, 6);
}

TEST_F(PlayerConversion, ConvertsTwoBlocksLikeOne)
{
    const Bytes a = {0x01, 0x92, 0x13, 0xA4, 0x25, 0xB6, 0x37, 0xC8, 0x49, 0xDA, 0x5B, 0xEC};
    const Bytes b(a.rbegin(), a.rend());
    for (const HostInteger bitSize : {7, 8, 15, 16, 24, 31, 32}) {
        SCOPED_TRACE(bitSize);
        const PlayerObject object;
        const test::Block first(a), second(b);
        ASSERT_TRUE(test::members.call<HostBoolean>("AddAudioStereo", object, static_cast<Memory>(first),
                                                    static_cast<Memory>(second), HostInteger{0},
                                                    HostInteger{0}, bitSize, HostBoolean{0}));
        const std::vector<float> left = converted(a, bitSize), right = converted(b, bitSize);
        std::vector<float> expected;
        for (std::size_t i = 0; i < left.size(); ++i) expected.insert(expected.end(), {left[i], right[i]});
        EXPECT_EQ(object.slot(0), expected);
    }
}

// ---- floats ----

// Bit patterns of floats that arithmetic could change: not-a-numbers, infinities, denormals and zeros.
const std::vector<std::uint32_t> patterns = {
    0x3F800000, 0xBF800000, 0x00000000, 0x80000000, 0x00000001, 0x80000001,
    0x007FFFFF, 0x7F7FFFFF, 0x7F800000, 0xFF800000, 0x7F800001, 0xFF800001,
    0x7FBFFFFF, 0x7FC00000, 0xFFC12345, 0x7FFFFFFF, 0xFFFFFFFF, 0x42F6E979,
};

std::vector<std::uint32_t> patternsOf(const player::PlayItem& item)
{
    std::vector<std::uint32_t> words(static_cast<std::size_t>(item.count));
    std::memcpy(words.data(), item.data, words.size() * 4);
    return words;
}

TEST_F(PlayerConversion, CopiesFloatsBitForBit)
{
    for (const HostInteger offset : {0, 1, 2, 3, 4}) {
        SCOPED_TRACE(offset);
        Bytes bytes(static_cast<std::size_t>(offset), 0xEE);
        const Bytes words = test::bytesOf(patterns);
        bytes.insert(bytes.end(), words.begin(), words.end());
        const test::Block block(bytes);
        const PlayerObject object;
        ASSERT_TRUE(test::members.call<HostBoolean>("AddFloatAudio", object, static_cast<Memory>(block),
                                                    offset, static_cast<HostInteger>(words.size()),
                                                    HostBoolean{0}));
        EXPECT_EQ(patternsOf(object->queue[0]), patterns);
    }
}

TEST_F(PlayerConversion, InterleavesFloatsBitForBit)
{
    const std::vector<std::uint32_t> reversed(patterns.rbegin(), patterns.rend());
    for (const HostInteger offset : {0, 3}) {
        SCOPED_TRACE(offset);
        const auto blockOf = [&](const std::vector<std::uint32_t>& words) {
            Bytes bytes(static_cast<std::size_t>(offset), 0xEE);
            const Bytes tail = test::bytesOf(words);
            bytes.insert(bytes.end(), tail.begin(), tail.end());
            return bytes;
        };
        const test::Block first(blockOf(patterns)), second(blockOf(reversed));
        const PlayerObject object;
        ASSERT_TRUE(test::members.call<HostBoolean>(
            "AddFloatAudioStereo", object, static_cast<Memory>(first), static_cast<Memory>(second), offset,
            static_cast<HostInteger>(patterns.size() * 4), HostBoolean{0}));
        std::vector<std::uint32_t> expected;
        for (std::size_t i = 0; i < patterns.size(); ++i)
            expected.insert(expected.end(), {patterns[i], reversed[i]});
        EXPECT_EQ(patternsOf(object->queue[0]), expected);
    }
}

TEST_F(PlayerConversion, CountsWholeFloats)
{
    for (HostInteger bytes = 4; bytes < 17; ++bytes) {
        const PlayerObject object;
        const test::Block block(Bytes(static_cast<std::size_t>(bytes), 0));
        ASSERT_TRUE(test::members.call<HostBoolean>("AddFloatAudio", object, static_cast<Memory>(block),
                                                    HostInteger{0}, HostInteger{0}, HostBoolean{0}));
        EXPECT_EQ(object->queue[0].count, bytes / 4);
    }
}

} // namespace
