#include "platform/audiofile/mpeg_header.h"

namespace kvxplatform::audiofile {
namespace {

// Bit rates in kbit/s, indexed by four bits of the header. Rows: layers I, II and III of MPEG-1; layer I of
// MPEG-2 and 2.5; layers II and III of MPEG-2 and 2.5. 0: free format, or an invalid header.
constexpr UInt16 bitRates[5][16] = {
    // clang-format off
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0},
    {0, 32, 48, 56,  64,  80,  96, 112, 128, 160, 192, 224, 256, 320, 384, 0},
    {0, 32, 40, 48,  56,  64,  80,  96, 112, 128, 160, 192, 224, 256, 320, 0},
    {0, 32, 48, 56,  64,  80,  96, 112, 128, 144, 160, 176, 192, 224, 256, 0},
    {0,  8, 16, 24,  32,  40,  48,  56,  64,  80,  96, 112, 128, 144, 160, 0},
    // clang-format on
};
constexpr UInt32 sampleRates[4] = {44100, 48000, 32000, 0};

// Header bits of sync, version, layer and sample rate, which are equal in one stream.
constexpr UInt32 streamBits = 0xFFFE0C00;

} // namespace

bool readMpegHeader(UInt32 word, MpegHeader& out, UInt32 freeBytes)
{
    const UInt32 version = word >> 19 & 3; // version field: 0 is MPEG-2.5, 2 is MPEG-2, 3 is MPEG-1
    const UInt32 layer = 4 - (word >> 17 & 3);
    const UInt32 rate = sampleRates[word >> 10 & 3];
    const UInt32 bitRateIndex = word >> 12 & 15;
    if (word >> 21 != 0x7FF || version == 1 || layer == 4 || rate == 0 || bitRateIndex == 15) return false;
    const bool isFreeFormat = bitRateIndex == 0;
    if (isFreeFormat && freeBytes == 0) return false;

    const bool isMPEG1 = version == 3;
    const UInt32 row = isMPEG1 ? layer - 1 : layer == 1 ? 3 : 4;
    const UInt32 divisor = isMPEG1 ? 1 : version == 2 ? 2 : 4;
    const UInt32 slot = layer == 1 ? 4 : 1; // unit of padding and frame size, in bytes
    const UInt32 padding = (word >> 9 & 1) * slot;
    out.word = word;
    out.layer = layer;
    out.isMPEG1 = isMPEG1;
    out.isMono = (word >> 6 & 3) == 3;
    out.isFreeFormat = isFreeFormat;
    out.samples = layer == 1 ? 384 : layer == 3 && !isMPEG1 ? 576 : 1152;
    const UInt32 bitRate = bitRates[row][bitRateIndex] * 1000u;
    out.bytes =
        padding + (isFreeFormat ? freeBytes : out.samples / 8 / slot * bitRate / (rate / divisor) * slot);
    return true;
}

bool isSameStream(const MpegHeader& a, const MpegHeader& b)
{
    return ((a.word ^ b.word) & streamBits) == 0 && a.isMono == b.isMono && a.isFreeFormat == b.isFreeFormat;
}

UInt32 infoOffset(const MpegHeader& header)
{
    // The frame header and the side information come before the name.
    return 4 + (header.isMPEG1 ? header.isMono ? 17 : 32 : header.isMono ? 9 : 17);
}

} // namespace kvxplatform::audiofile
