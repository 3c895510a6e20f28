// Tests linear PCM samples of every width and byte order, bit by bit.
#include "platform/pcm/linear_pcm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace kvxplatform::pcm;
using Bytes = std::vector<unsigned char>;

constexpr UInt32 flt = 1, big = 2, sgn = 4, packed = 8, high = 16;

AudioStreamBasicDescription mono(UInt32 bits, UInt32 flags, UInt32 bytes)
{
    return {44100, 'lpcm', flags, bytes, 1, bytes, 1, bits, 0};
}

AudioBufferList listOf(Bytes& bytes)
{
    AudioBufferList list = {};
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {1, static_cast<UInt32>(bytes.size()), bytes.data()};
    return list;
}

Float32 read(const AudioStreamBasicDescription& format, Bytes bytes)
{
    Float32 value = 99;
    decode(format, listOf(bytes), 1, &value);
    return value;
}

Bytes written(const AudioStreamBasicDescription& format, Float32 value)
{
    Bytes bytes(format.mBytesPerFrame, 0xEE);
    AudioBufferList list = listOf(bytes);
    encode(format, &value, 1, list, 0);
    return bytes;
}

// clang-format off
const struct { UInt32 bits, flags, bytes; Bytes stored; Float32 value; const char* why; } facts[] = {
    {8,  sgn | packed,        1, {0x00},                   0.0f,             "8 bits: zero"},
    {8,  sgn | packed,        1, {0x7F},                   127.0f / 128,     "largest"},
    {8,  sgn | packed,        1, {0x80},                   -1.0f,            "smallest"},
    {8,  sgn | packed,        1, {0xFF},                   -1.0f / 128,      "least below zero"},
    {8,  packed,              1, {0x80},                   0.0f,             "8 bits unsigned: the middle is zero"},
    {8,  packed,              1, {0xFF},                   127.0f / 128,     "largest"},
    {8,  packed,              1, {0x00},                   -1.0f,            "smallest"},
    {16, sgn | packed,        2, {0x01, 0x00},             1.0f / 32768,     "16 bits: little-endian"},
    {16, sgn | packed,        2, {0xFF, 0x7F},             32767.0f / 32768, "largest"},
    {16, sgn | packed,        2, {0x00, 0x80},             -1.0f,            "smallest"},
    {16, sgn | packed | big,  2, {0x00, 0x01},             1.0f / 32768,     "big-endian"},
    {16, packed | big,        2, {0x80, 0x01},             1.0f / 32768,     "unsigned"},
    {24, sgn | packed,        3, {0x01, 0x00, 0x00},       1.0f / 8388608,   "24 bits"},
    {24, sgn | packed,        3, {0x00, 0x00, 0x80},       -1.0f,            "smallest"},
    {24, sgn | packed | big,  3, {0x7F, 0xFF, 0xFF},       8388607.0f / 8388608, "largest"},
    {24, sgn,                 4, {0x01, 0x00, 0x00, 0x00}, 1.0f / 8388608,   "low in 32"},
    {24, sgn,                 4, {0xFF, 0xFF, 0xFF, 0xFF}, -1.0f / 8388608,  "low in 32, filled with its sign"},
    {24, sgn | high,          4, {0x00, 0x01, 0x00, 0x00}, 1.0f / 8388608,   "high in 32"},
    {24, sgn | high | big,    4, {0x80, 0x00, 0x00, 0x00}, -1.0f,            "high in 32, big-endian"},
    {20, sgn | high,          3, {0x10, 0x00, 0x00},       1.0f / 524288,    "20 bits high in 24"},
    {12, sgn,                 2, {0xFF, 0x07},             2047.0f / 2048,   "12 bits low in 16"},
    {32, sgn | packed,        4, {0x00, 0x01, 0x00, 0x00}, 1.0f / 8388608,   "32 bits"},
    {32, sgn | packed,        4, {0x00, 0x00, 0x00, 0x80}, -1.0f,            "smallest"},
    {32, packed | big,        4, {0xC0, 0x00, 0x00, 0x00}, 0.5f,             "unsigned, big-endian"},
    {32, flt | packed,        4, {0x00, 0x00, 0x00, 0x3F}, 0.5f,             "float"},
    {32, flt | packed | big,  4, {0xBF, 0x80, 0x00, 0x00}, -1.0f,            "float, big-endian"},
    {32, flt | packed,        4, {0x00, 0x00, 0x20, 0x41}, 10.0f,            "above full scale, kept"},
    {64, flt | packed,        8, {0, 0, 0, 0, 0, 0, 0xE0, 0x3F}, 0.5f,       "double"},
    {64, flt | packed | big,  8, {0xC0, 0x24, 0, 0, 0, 0, 0, 0}, -10.0f,     "double, big-endian"},
};
// clang-format on

TEST(LinearPCM, ReadsAndWritesTheSameBytes)
{
    for (const auto& fact : facts) {
        const auto format = mono(fact.bits, fact.flags, fact.bytes);
        SCOPED_TRACE(std::string(fact.why) + ", " + std::to_string(fact.bits) + " bits");
        ASSERT_TRUE(isLinearPCM(format));
        EXPECT_EQ(read(format, fact.stored), fact.value);
        EXPECT_EQ(written(format, fact.value), fact.stored);
    }
}

TEST(LinearPCM, Every16BitSampleSurvivesARoundTrip)
{
    for (const UInt32 flags : {sgn | packed, sgn | packed | big, packed})
        for (unsigned value = 0; value < 0x10000; ++value) {
            const Bytes bytes = {static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8)};
            const auto format = mono(16, flags, 2);
            ASSERT_EQ(written(format, read(format, bytes)), bytes) << value;
        }
}

TEST(LinearPCM, Every24BitSampleSurvivesARoundTrip)
{
    constexpr UInt32 frames = 1 << 12;
    const auto format = mono(24, sgn | packed, 3);
    Bytes bytes(frames * 3), back(frames * 3);
    std::vector<Float32> samples(frames);
    for (unsigned base = 0; base < 1u << 24; base += frames) {
        for (unsigned i = 0; i < frames; ++i)
            for (unsigned b = 0; b < 3; ++b)
                bytes[i * 3 + b] = static_cast<unsigned char>((base + i) >> 8 * b);
        decode(format, listOf(bytes), frames, samples.data());
        AudioBufferList list = listOf(back);
        encode(format, samples.data(), frames, list, 0);
        ASSERT_EQ(back, bytes) << base;
    }
}

TEST(LinearPCM, RoundsToNearestAndClips)
{
    constexpr Float32 step = 1.0f / 32768, infinite = std::numeric_limits<Float32>::infinity();
    // clang-format off
    const struct { Float32 value; int stored; const char* why; } rounded[] = {
        {0.4f * step,   0,      "below a half"},
        {0.5f * step,   0,      "a tie goes to the even"},
        {0.6f * step,   1,      "above a half"},
        {1.5f * step,   2,      "a tie goes to the even"},
        {-0.5f * step,  0,      "a tie below zero"},
        {-0.6f * step,  -1,     "more than half below zero"},
        {1.0f,          32767,  "full scale is clipped to one step less"},
        {32767.6f * step, 32767, "just below full scale"},
        {2.0f,          32767,  "clipped"},
        {-1.0f,         -32768, "negative full scale"},
        {-2.0f,         -32768, "clipped"},
        {infinite,      32767,  "infinite"},
        {-infinite,     -32768, "infinite"},
        {std::nanf(""), 0,      "not a number"},
        {1e-40f,        0,      "denormal"},
    };
    // clang-format on
    const auto format = mono(16, sgn | packed, 2);
    for (const auto& fact : rounded) {
        const Bytes bytes = written(format, fact.value);
        EXPECT_EQ(static_cast<std::int16_t>(bytes[0] | bytes[1] << 8), fact.stored) << fact.why;
    }
    EXPECT_EQ(written(mono(32, sgn | packed, 4), 1.0f), (Bytes{0xFF, 0xFF, 0xFF, 0x7F}));
    EXPECT_EQ(written(mono(32, sgn | packed, 4), -1.0f), (Bytes{0x00, 0x00, 0x00, 0x80}));
    EXPECT_EQ(written(mono(8, packed, 1), 1.0f), (Bytes{0xFF}));
}

TEST(LinearPCM, HandlesChannelsAndFirstFrame)
{
    const AudioStreamBasicDescription stereo = {44100, 'lpcm', sgn | packed, 4, 1, 4, 2, 16, 0};
    Bytes bytes = {1, 0, 2, 0, 3, 0, 4, 0, 0xEE, 0xEE, 0xEE, 0xEE};
    AudioBufferList list = listOf(bytes);
    Float32 samples[4];
    decode(stereo, list, 2, samples);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(samples[i], (i + 1) / 32768.0f);
    encode(stereo, samples, 1, list, 2);
    EXPECT_EQ(bytes, (Bytes{1, 0, 2, 0, 3, 0, 4, 0, 1, 0, 2, 0}));
}

} // namespace
