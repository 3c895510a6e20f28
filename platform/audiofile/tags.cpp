#include "platform/audiofile/tags.h"

#include <cstring>

namespace kvxplatform::audiofile {
namespace {

constexpr SInt64 id3v1Bytes = 128, enhancedId3v1Bytes = 227, id3v2Header = 10, apeHeader = 32;

SInt64 id3v2Bytes(ByteReader& file, SInt64 offset)
{
    const UInt8* tag = file.at(offset, id3v2Header);
    if (!tag || tag[3] == 0xFF || tag[4] == 0xFF) return 0;
    SInt64 size = 0;
    for (int i = 6; i < 10; ++i) {
        if (tag[i] & 0x80) return 0;
        size = size << 7 | tag[i];
    }
    const bool hasFooter = tag[5] & 0x10;
    return size + id3v2Header * (hasFooter ? 2 : 1);
}

/// Get the size of an APE tag, or of an APE footer alone. The size field of a header excludes the header
/// itself. The size field of a footer counts the bytes before the footer, so a footer alone has 32 bytes.
SInt64 apeBytes(ByteReader& file, SInt64 offset)
{
    const UInt8* tag = file.at(offset, apeHeader);
    if (!tag || std::memcmp(tag, "APETAGEX", 8) != 0) return 0;
    const bool isHeader = tag[23] & 0x20;
    return apeHeader + (isHeader ? static_cast<SInt64>(file.number(offset + 12, 4, false)) : 0);
}

/// Get the size of a Lyrics3 tag, which ends with a nine-byte name directly before an ID3v1 tag or the end of
/// the file.
SInt64 lyricsBytes(ByteReader& file, SInt64 offset)
{
    const UInt8* tag = file.at(offset, 11);
    if (!tag || std::memcmp(tag, "LYRICSBEGIN", 11) != 0) return 0;
    constexpr SInt64 nameBytes = 9;
    const SInt64 end = file.size() - nameBytes;
    for (const SInt64 at : {end, end - id3v1Bytes}) {
        const UInt8* name = at > offset ? file.at(at, nameBytes) : nullptr;
        if (name && (std::memcmp(name, "LYRICSEND", 9) == 0 || std::memcmp(name, "LYRICS200", 9) == 0))
            return at + nameBytes - offset;
    }
    return 0;
}

} // namespace

SInt64 tagBytes(ByteReader& file, SInt64 offset)
{
    const UInt32 name = file.word(offset);
    SInt64 bytes = 0;
    if (name >> 8 == 'ID3 ' >> 8)
        bytes = id3v2Bytes(file, offset);
    else if (name == 'TAG+')
        bytes = enhancedId3v1Bytes;
    else if (name >> 8 == 'TAG ' >> 8)
        bytes = id3v1Bytes;
    else if (name == 'APET')
        bytes = apeBytes(file, offset);
    else if (name == 'LYRI')
        bytes = lyricsBytes(file, offset);
    return bytes <= file.size() - offset ? bytes : 0;
}

SInt64 afterTags(ByteReader& file, SInt64 offset)
{
    while (const SInt64 bytes = tagBytes(file, offset)) offset += bytes;
    return offset;
}

} // namespace kvxplatform::audiofile
