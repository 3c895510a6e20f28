// The text of a stream format, and the functions that describe the format.
#include "auplayer/stream_description.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

using auplayer::CAStreamBasicDescription;

constexpr UInt32 isBigEndian = 2, isPacked = 8, isHigh = 0x10, isDeinterleaved = 0x20;

CAStreamBasicDescription format(double rate, UInt32 id, UInt32 flags, UInt32 packetBytes, UInt32 packetFrames,
                                UInt32 frameBytes, UInt32 channels, UInt32 bits)
{
    CAStreamBasicDescription description = {};
    description.mSampleRate = rate;
    description.mFormatID = id;
    description.mFormatFlags = flags;
    description.mBytesPerPacket = packetBytes;
    description.mFramesPerPacket = packetFrames;
    description.mBytesPerFrame = frameBytes;
    description.mChannelsPerFrame = channels;
    description.mBitsPerChannel = bits;
    return description;
}

CAStreamBasicDescription linear(UInt32 flags, UInt32 bits, UInt32 frameBytes, UInt32 channels)
{
    return format(44100, 'lpcm', flags, frameBytes, 1, frameBytes, channels, bits);
}

/// Return the text of a format. The text is written into a zeroed buffer between guards.
std::string textOf(const CAStreamBasicDescription& description,
                   unsigned long size = auplayer::streamTextBytes)
{
    constexpr std::size_t guardBytes = 64, bufferBytes = 500;
    std::vector<char> memory(guardBytes + bufferBytes + guardBytes, '\x5A');
    char* const buffer = memory.data() + guardBytes;
    std::memset(buffer, 0, bufferBytes);
    EXPECT_EQ(description.AsString(buffer, size), buffer);

    const auto isGuard = [](char byte) { return byte == '\x5A'; };
    EXPECT_TRUE(std::all_of(memory.begin(), memory.begin() + guardBytes, isGuard));
    EXPECT_TRUE(std::all_of(memory.end() - guardBytes, memory.end(), isGuard));
    const auto end = std::find(buffer, buffer + bufferBytes, '\0');
    EXPECT_NE(end, buffer + bufferBytes) << "the text is terminated";
    EXPECT_TRUE(std::all_of(end, buffer + bufferBytes, [](char byte) { return byte == 0; }))
        << "the bytes after the terminator are unchanged";
    return std::string(buffer, end);
}

// ---- complete texts of formats ----

TEST(StreamDescription, ReadsAsOneLine)
{
    const struct {
        CAStreamBasicDescription description;
        const char* text;
        const char* why;
    } rows[] = {
        // clang-format off
        {format(44100, 'lpcm', 9, 8, 1, 8, 2, 32),
         " 2 ch,  44100 Hz, 'lpcm' (0x00000009) 32-bit little-endian float", "samples in memory"},
        {format(44100, 'lpcm', 0x29, 4, 1, 4, 2, 32),
         " 2 ch,  44100 Hz, 'lpcm' (0x00000029) 32-bit little-endian float, deinterleaved",
         "the format between the units: bytes per frame count one channel"},
        {format(44100, 'lpcm', 0xE, 6, 1, 6, 2, 24),
         " 2 ch,  44100 Hz, 'lpcm' (0x0000000E) 24-bit big-endian signed integer", "24 bits in 3 bytes"},
        {format(48000, 'lpcm', 4, 8, 1, 8, 2, 24),
         " 2 ch,  48000 Hz, 'lpcm' (0x00000004) 24-bit little-endian signed integer, unpacked in 4 bytes low-aligned",
         "24 bits in 4 bytes"},
        {format(48000, 'lpcm', 0x14, 8, 1, 8, 2, 24),
         " 2 ch,  48000 Hz, 'lpcm' (0x00000014) 24-bit little-endian signed integer, unpacked in 4 bytes high-aligned",
         "high-aligned in 4 bytes"},
        {format(48000, 'lpcm', 0xC, 8, 1, 8, 2, 24),
         " 2 ch,  48000 Hz, 'lpcm' (0x0000000C) 24-bit little-endian signed integer, packed in 4 bytes low-aligned",
         "with the packed flag"},
        {format(48000, 'lpcm', 0x3E, 4, 1, 4, 2, 24),
         " 2 ch,  48000 Hz, 'lpcm' (0x0000003E) 24-bit big-endian signed integer, packed in 4 bytes high-aligned, deinterleaved",
         "all parts"},
        {format(8000, 'lpcm', 8, 1, 1, 1, 1, 8),
         " 1 ch,   8000 Hz, 'lpcm' (0x00000008) 8-bit unsigned integer", "one byte has no byte order"},
        {format(8000, 'lpcm', 0xA, 1, 1, 1, 1, 8),
         " 1 ch,   8000 Hz, 'lpcm' (0x0000000A) 8-bit unsigned integer", "one byte with the big-endian flag"},
        {format(96000, 'lpcm', 0xC0C, 8, 1, 8, 2, 32),
         " 2 ch,  96000 Hz, 'lpcm' (0x00000C0C) 8.24-bit little-endian signed integer", "24 fraction bits"},
        {format(96000, 'lpcm', 0x8C, 8, 1, 8, 2, 32),
         " 2 ch,  96000 Hz, 'lpcm' (0x0000008C) 31.1-bit little-endian signed integer", "one fraction bit"},
        {format(96000, 'lpcm', 0x1F8C, 8, 1, 8, 2, 32),
         " 2 ch,  96000 Hz, 'lpcm' (0x00001F8C) -31.63-bit little-endian signed integer", "63 fraction bits of 32"},
        {format(96000, 'lpcm', 0x1F84, 0, 1, 0, 2, 0x80000000),
         " 2 ch,  96000 Hz, 'lpcm' (0x00001F84) 2147483585.63-bit signed integer", "the difference wraps"},
        {format(96000, 'lpcm', 0x200C, 8, 1, 8, 2, 32),
         " 2 ch,  96000 Hz, 'lpcm' (0x0000200C) 32-bit little-endian signed integer", "the bit above the fraction field"},
        {format(96000, 'lpcm', 0x4C, 8, 1, 8, 2, 32),
         " 2 ch,  96000 Hz, 'lpcm' (0x0000004C) 32-bit little-endian signed integer", "the bit below the fraction field"},
        {format(44100, 'lpcm', 9, 0, 1, 0, 2, 32),
         " 2 ch,  44100 Hz, 'lpcm' (0x00000009) 32-bit float", "no frame size: no byte order, no packing"},
        {format(44100, 'lpcm', 9, 8, 1, 8, 0, 32),
         " 0 ch,  44100 Hz, 'lpcm' (0x00000009) 32-bit float", "no channels: no byte order, no packing"},
        {format(44100, 'lpcm', 0x29, 8, 1, 8, 0, 32),
         " 0 ch,  44100 Hz, 'lpcm' (0x00000029) 32-bit little-endian float, packed in 8 bytes low-aligned, deinterleaved",
         "no channels, deinterleaved: the frame is one sample"},
        {format(44100, 'lpcm', 9, 3, 1, 3, 4, 32),
         " 4 ch,  44100 Hz, 'lpcm' (0x00000009) 32-bit float", "less than one byte per sample"},
        {format(44100, 'lpcm', 9, 7, 1, 7, 4, 32),
         " 4 ch,  44100 Hz, 'lpcm' (0x00000009) 32-bit float, packed in 1 bytes low-aligned", "the division drops the remainder"},
        {format(44100, 'lpcm', 9, 11, 1, 11, 4, 16),
         " 4 ch,  44100 Hz, 'lpcm' (0x00000009) 16-bit little-endian float", "2 bytes and a remainder"},
        {format(0, 'lpcm', 0, 0, 0, 0, 0, 0),
         " 0 ch,      0 Hz, 'lpcm' (0x00000000) 0-bit unsigned integer", "all fields zero but the identifier"},
        {format(44100, 'lpcm', 9, 4000, 1, 4000, 1000, 32),
         "1000 ch,  44100 Hz, 'lpcm' (0x00000009) 32-bit little-endian float", "channels wider than their column"},
        {format(192000, 'lpcm', 9, 40, 1, 40, 10, 32),
         "10 ch, 192000 Hz, 'lpcm' (0x00000009) 32-bit little-endian float", "a full column"},
        {format(2822400, 'lpcm', 9, 40, 1, 40, 10, 32),
         "10 ch, 2822400 Hz, 'lpcm' (0x00000009) 32-bit little-endian float", "a rate wider than its column"},

        {format(44100, 'alac', 0, 0, 4096, 0, 2, 0),
         " 2 ch,  44100 Hz, 'alac' (0x00000000) from UNKNOWN source bit depth, 4096 frames/packet", "unknown source depth"},
        {format(44100, 'alac', 1, 0, 4096, 0, 2, 0),
         " 2 ch,  44100 Hz, 'alac' (0x00000001) from 16-bit source, 4096 frames/packet", "16"},
        {format(44100, 'alac', 2, 0, 4096, 0, 2, 0),
         " 2 ch,  44100 Hz, 'alac' (0x00000002) from 20-bit source, 4096 frames/packet", "20"},
        {format(44100, 'alac', 3, 0, 4096, 0, 2, 0),
         " 2 ch,  44100 Hz, 'alac' (0x00000003) from 24-bit source, 4096 frames/packet", "24"},
        {format(44100, 'alac', 4, 0, 1, 0, 2, 0),
         " 2 ch,  44100 Hz, 'alac' (0x00000004) from 32-bit source, 1 frames/packet", "32"},
        {format(44100, 'alac', 5, 0, 4096, 0, 2, 0),
         " 2 ch,  44100 Hz, 'alac' (0x00000005) from UNKNOWN source bit depth, 4096 frames/packet", "the first unknown depth"},
        {format(44100, 'alac', 0xFFFFFFFF, 0, 0, 0, 2, 0),
         " 2 ch,  44100 Hz, 'alac' (0xFFFFFFFF) from UNKNOWN source bit depth, 0 frames/packet", "the last unknown depth"},

        {format(44100, '.mp3', 0, 0, 1152, 0, 2, 0),
         " 2 ch,  44100 Hz, '.mp3' (0x00000000) 0 bits/channel, 0 bytes/packet, 1152 frames/packet, 0 bytes/frame", "another format"},
        {format(8000, 'ulaw', 0x21, 12, 34, 56, 1, 78),
         " 1 ch,   8000 Hz, 'ulaw' (0x00000021) 78 bits/channel, 12 bytes/packet, 34 frames/packet, 56 bytes/frame", "the flags have no effect"},
        {format(8000, 'LPCM', 9, 8, 1, 8, 2, 32),
         " 2 ch,   8000 Hz, 'LPCM' (0x00000009) 32 bits/channel, 8 bytes/packet, 1 frames/packet, 8 bytes/frame", "capital letters differ"},
        {format(0, 0, 0, 0, 0, 0, 0, 0),
         " 0 ch,      0 Hz, 0x00000000 (0x00000000) 0 bits/channel, 0 bytes/packet, 0 frames/packet, 0 bytes/frame", "all fields zero"},
        // clang-format on
    };
    for (const auto& row : rows) EXPECT_EQ(textOf(row.description), row.text) << row.why;
}

TEST(StreamDescription, IgnoresTheSizeArgument)
{
    const CAStreamBasicDescription description = linear(9, 32, 8, 2);
    for (const unsigned long size : {0ul, 1ul, 10ul, 499ul, 501ul, ~0ul})
        EXPECT_EQ(textOf(description, size), textOf(description)) << size;
}

// ---- identifier and rate ----

TEST(StreamDescription, WritesAnIdentifierAsTextOrAsANumber)
{
    const struct {
        UInt32 id;
        const char* text;
        const char* why;
    } rows[] = {
        {'aac ', "'aac '", "a blank is printable"},
        {'    ', "'    '", "four blanks"},
        {0x7E7E7E7E, "'~~~~'", "the last printable character"},
        {0x7E7E7E7F, "0x7E7E7E7F", "one above it"},
        {0x1F202020, "0x1F202020", "one below the first printable character"},
        {0x27272727, "''''''", "quotation marks"},
        {0x25732573, "'%s%s'", "format characters"},
        {0x5B5D5B5D, "'[][]'", "the neighbours of the backslash"},
        {0x5C616263, "0x5C616263", "a backslash in the first byte"},
        {0x615C6263, "0x615C6263", "a backslash in the second byte"},
        {0x61625C63, "0x61625C63", "a backslash in the third byte"},
        {0x6162635C, "0x6162635C", "a backslash in the fourth byte"},
        {0x00616263, "0x00616263", "the first byte is not printable"},
        {0x610A6263, "0x610A6263", "the second byte is not printable"},
        {0x61628063, "0x61628063", "the third byte is not printable"},
        {0x616263FF, "0x616263FF", "the fourth byte is not printable"},
        {1, "0x00000001", "a small number"},
        {0xFFFFFFFF, "0xFFFFFFFF", "the largest number"},
        {0xABCDEF01, "0xABCDEF01", "capital hexadecimal digits"},
    };
    for (const auto& row : rows) {
        const std::string text = textOf(format(8000, row.id, 0x12AB, 1, 2, 3, 4, 5));
        EXPECT_EQ(text, std::string(" 4 ch,   8000 Hz, ") + row.text +
                            " (0x000012AB) 5 bits/channel, 1 bytes/packet, 2 frames/packet, 3 bytes/frame")
            << row.why;
    }
}

TEST(StreamDescription, RoundsTheRateToWholeHertz)
{
    const struct {
        double rate;
        const char* text;
    } rows[] = {{44100.4, " 44100"},   {44100.6, " 44101"}, {44100.5, " 44100"}, {44101.5, " 44102"},
                {-44100, "-44100"},    {-0.0, "    -0"},    {0.4, "     0"},     {999999, "999999"},
                {999999.6, "1000000"}, {NAN, "   nan"},     {INFINITY, "   inf"}};
    for (const auto& row : rows)
        EXPECT_EQ(textOf(format(row.rate, 'lpcm', 9, 8, 1, 8, 2, 32)),
                  std::string(" 2 ch, ") + row.text + " Hz, 'lpcm' (0x00000009) 32-bit little-endian float");
}

TEST(StreamDescription, FitsItsBufferAtItsLongest)
{
    // Every number in these formats has its largest width, such as 309 digits for the rate.
    const struct {
        CAStreamBasicDescription description;
        std::size_t length;
    } rows[] = {
        {format(-DBL_MAX, 'lpcm', 0xC0000030 | 63 << 7, 0x80000000, 0x80000000, 0x80000000, 0x80000000,
                0x8000003F),
         459},
        {format(-DBL_MAX, 1, ~0u, 0x80000000, 0x80000000, 0x80000000, 0x80000000, 0x80000000), 457},
        {format(-DBL_MAX, 'alac', ~0u, 0x80000000, 0x80000000, 0x80000000, 0x80000000, 0x80000000), 407},
    };
    for (const auto& row : rows) {
        const std::string text = textOf(row.description);
        EXPECT_EQ(text.size(), row.length) << text;
        EXPECT_EQ(text.rfind("-2147483648 ch, -17976931348623157", 0), 0u) << text;
    }
}

TEST(StreamDescription, WritesARateOf300Digits)
{
    const std::string digits =
        "10000000000000000525047602552044202487044685811081591549158541155118024579889081"
        "95786371375080447864043704443832883878176942523235360430575644792184786706982848"
        "38720092657580373783023379478809005936895323497079994508111903896764088007465274"
        "2780142494579258788820056842838115669472196386865459400540160";
    const std::string text = textOf(format(1e300, 'lpcm', 9, 8, 1, 8, 2, 32));
    EXPECT_EQ(text, " 2 ch, " + digits + " Hz, 'lpcm' (0x00000009) 32-bit little-endian float");
}

// ---- linear PCM ----

TEST(StreamDescription, NamesEveryCombinationOfTheLinearPCMFlags)
{
    // clang-format off
    static const char* const signs[]      = {" unsigned integer", " float", " unsigned integer", " float",
                                             " signed integer",   " float", " signed integer",   " float"};
    static const char* const alignments[] = {" low-aligned", " high-aligned"};
    static const char* const packings[]   = {"unpacked", "packed"};
    // clang-format on
    int combinations = 0;
    for (UInt32 flags = 0; flags < 0x40; ++flags)
        for (UInt32 wordSize = 0; wordSize <= 8; ++wordSize)
            for (const UInt32 bits : {0u, 7u, 8u, 16u, 20u, 24u, 32u, 64u})
                for (const UInt32 channels : {1u, 2u, 6u})
                    for (const UInt32 fraction : {0u, 1u, 8u, 63u}) {
                        const UInt32 all = flags | fraction << 7;
                        const bool deinterleaved = (flags & isDeinterleaved) != 0;
                        const UInt32 frameBytes = deinterleaved ? wordSize : wordSize * channels;

                        std::string text = std::to_string(int(bits) - int(fraction));
                        if (fraction) text += "." + std::to_string(fraction);
                        text += "-bit";
                        if (wordSize > 1) text += flags & isBigEndian ? " big-endian" : " little-endian";
                        text += signs[flags & 7];
                        if (wordSize > 0 && 8 * wordSize != bits)
                            text += std::string(", ") + packings[(flags & isPacked) / isPacked] + " in " +
                                    std::to_string(wordSize) + " bytes" +
                                    alignments[(flags & isHigh) / isHigh];
                        if (deinterleaved) text += ", deinterleaved";

                        const std::string whole = textOf(linear(all, bits, frameBytes, channels));
                        const std::string start = " " + std::to_string(channels) + " ch,  44100 Hz, 'lpcm' (";
                        ASSERT_EQ(whole.substr(0, start.size()), start);
                        ASSERT_EQ(whole.substr(start.size() + 12), text) << whole;
                        ++combinations;
                    }
    EXPECT_EQ(combinations, 64 * 9 * 8 * 3 * 4);
}

// ---- functions that describe the format ----

TEST(StreamDescription, AnswersQuestions)
{
    const struct {
        const char* why;
        CAStreamBasicDescription description;
        bool pcm, interleaved, isFloat, native, isSigned;
        UInt32 interleavedChannels, streams, channels, word;
    } rows[] = {
        // clang-format off
        //                                                        pcm    inter  float  native signed inCh str ch word
        {"samples in memory",     linear(9, 32, 8, 2),            true,  true,  true,  true,  false, 2,   1,  2, 4},
        {"between the units",     linear(0x29, 32, 4, 2),         true,  false, true,  true,  false, 1,   2,  2, 4},
        {"16 bits",               linear(0xC, 16, 4, 2),          true,  true,  false, true,  true,  2,   1,  2, 2},
        {"16 bits, big-endian",   linear(0xE, 16, 4, 2),          true,  true,  false, false, true,  2,   1,  2, 2},
        {"float and integer flags",linear(5, 16, 4, 2),            true,  true,  true,  true,  true,  2,   1,  2, 2},
        {"unsigned",              linear(8, 8, 1, 1),             true,  true,  false, true,  false, 1,   1,  1, 1},
        {"64 channels",           linear(9, 32, 256, 64),         true,  true,  true,  true,  false, 64,  1, 64, 4},
        {"no channels",           linear(9, 32, 8, 0),            true,  true,  true,  true,  false, 0,   1,  0, 0},
        {"no channels, deinterleaved",  linear(0x29, 32, 8, 0),         true,  false, true,  true,  false, 1,   0,  0, 8},
        {"no frame size",         linear(9, 32, 0, 2),            true,  true,  true,  true,  false, 2,   1,  2, 0},
        {"a remainder",           linear(9, 32, 11, 2),           true,  true,  true,  true,  false, 2,   1,  2, 5},
        {"less than a byte",      linear(9, 32, 1, 2),            true,  true,  true,  true,  false, 2,   1,  2, 0},
        {"packets",     format(8000, '.mp3', 0x27, 0, 1152, 8, 2, 0), false, true, false, false, false, 2, 1,  2, 4},
        {"packets",     format(8000, 'alac', 0x25, 0, 4096, 0, 2, 0), false, true, false, true,  false, 2, 1,  2, 0},
        {"all fields zero",       format(0, 0, 0, 0, 0, 0, 0, 0), false, true,  false, true,  false, 0,   1,  0, 0},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        const CAStreamBasicDescription& d = row.description;
        EXPECT_EQ(d.isPCM(), row.pcm);
        EXPECT_EQ(d.isInterleaved(), row.interleaved);
        EXPECT_EQ(d.isFloat(), row.isFloat);
        EXPECT_EQ(d.isNativeEndian(), row.native);
        EXPECT_EQ(d.isSignedInteger(), row.isSigned);
        EXPECT_EQ(d.numberInterleavedChannels(), row.interleavedChannels);
        EXPECT_EQ(d.numberChannelStreams(), row.streams);
        EXPECT_EQ(d.numberChannels(), row.channels);
        EXPECT_EQ(d.sampleWordSize(), row.word);
    }
}

TEST(StreamDescription, HasTheSizeOfThePlatformsRecord)
{
    EXPECT_EQ(sizeof(CAStreamBasicDescription), sizeof(AudioStreamBasicDescription));
}

} // namespace
