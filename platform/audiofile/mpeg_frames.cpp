#include "platform/audiofile/mpeg_frames.h"

#include "platform/audiofile/byte_reader.h"

#include <algorithm>
#include <cstring>

namespace kvxplatform::audiofile {
namespace {

// In kbit/s by the header's four bits: MPEG-1's layers I to III, then layer I and the other two of the later
// standards. 0: told by nobody, or no rate.
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

constexpr UInt32 sameStream = 0xFFFE0C00; // the bits that all frames of a stream share: all but rate and mode

constexpr std::size_t tagHeader = 10; // bytes of a tag (ID3v2) before what it holds

/// The bytes of a tag at a place; 0 if there is none.
SInt64 tagBytes(ByteReader& bytes, SInt64 place)
{
    const UInt8* tag = bytes.at(place, tagHeader);
    if (!tag || std::memcmp(tag, "ID3", 3) != 0) return 0;
    SInt64 size = 0;
    for (int i = 6; i < 10; ++i) {
        if (tag[i] & 0x80) return 0;
        size = size << 7 | tag[i];
    }
    const bool hasFooter = tag[5] & 0x10;
    return size + static_cast<SInt64>(tagHeader) * (hasFooter ? 2 : 1);
}

/// Whether the frame at a place holds a note about the stream instead of sound, and one that says how many
/// frames there are.
bool isNote(ByteReader& bytes, SInt64 place, const MpegHeader& header)
{
    const UInt32 name = header.layer == 3 ? bytes.word(place + infoPlace(header)) : 0;
    return name == 'Xing' || name == 'Info';
}
bool saysLength(ByteReader& bytes, SInt64 place, const MpegHeader& header)
{
    return isNote(bytes, place, header) && bytes.word(place + infoPlace(header) + 4) & 1;
}

} // namespace

bool readMpegHeader(UInt32 word, MpegHeader& out)
{
    const UInt32 version = word >> 19 & 3; // 0: 2.5, 2: 2, 3: 1
    const UInt32 layer = 4 - (word >> 17 & 3);
    const UInt32 rate = sampleRates[word >> 10 & 3];
    if (word >> 21 != 0x7FF || version == 1 || layer == 4 || rate == 0) return false;

    const bool isMPEG1 = version == 3;
    const UInt32 row = isMPEG1 ? layer - 1 : layer == 1 ? 3 : 4;
    const UInt32 bitRate = bitRates[row][word >> 12 & 15] * 1000u;
    if (bitRate == 0) return false;

    const UInt32 divisor = isMPEG1 ? 1 : version == 2 ? 2 : 4;
    const UInt32 padding = word >> 9 & 1;
    out.word = word;
    out.layer = layer;
    out.isMPEG1 = isMPEG1;
    out.isMono = (word >> 6 & 3) == 3;
    out.samples = layer == 1 ? 384 : layer == 3 && !isMPEG1 ? 576 : 1152;
    const UInt32 slot = layer == 1 ? 4 : 1;
    out.bytes = (out.samples / 8 / slot * bitRate / (rate / divisor) + padding) * slot;
    return true;
}

UInt32 infoPlace(const MpegHeader& header)
{
    // Behind the header and the frame's side information.
    return 4 + (header.isMPEG1 ? header.isMono ? 17 : 32 : header.isMono ? 9 : 17);
}

MpegFrames countMpegFrames(int descriptor, SInt64 fileBytes)
{
    ByteReader bytes(descriptor, fileBytes);
    MpegFrames frames;
    MpegHeader header;
    for (SInt64 place = 0; place + 4 <= fileBytes;) {
        const UInt32 word = bytes.word(place);
        const bool isFirst = frames.first.bytes == 0;
        const bool fits = readMpegHeader(word, header) &&
                          (isFirst || (word & sameStream) == (frames.first.word & sameStream)) &&
                          place + header.bytes <= fileBytes;
        if (!fits) {
            const SInt64 tag = tagBytes(bytes, place);
            place += std::max<SInt64>(tag, 1);
            continue;
        }
        if (isFirst) {
            if (saysLength(bytes, place, header)) {
                frames.hasLength = true;
                return frames;
            }
            if (isNote(bytes, place, header)) {
                place += header.bytes;
                continue;
            }
            frames.first = header;
            frames.start = place;
        }
        ++frames.count;
        place += header.bytes;
    }
    return frames;
}

} // namespace kvxplatform::audiofile
