#include "platform/audiofile/container.h"

#include <algorithm>

namespace kvxplatform::audiofile {
namespace {

/// A container format of consecutive chunks. Each chunk has an id, a length and a body.
struct Chunked {
    UInt32 magic;            ///< the file's first four bytes
    SInt64 firstChunk;       ///< file offset of the first chunk
    std::size_t idBytes;     ///< size of a chunk's id; the id's first four bytes identify the chunk
    std::size_t lengthBytes; ///< size of a chunk's length field: 4 or 8 bytes
    bool isBigEndian;
    bool countsHeader; ///< true if a chunk's length includes the id and the length field
    SInt64 alignment;  ///< alignment of the start of each chunk, in bytes
    UInt32 sound;      ///< id of the chunk with the samples
    SInt64 preamble;   ///< number of bytes before the samples in the body of the sound chunk
};

// clang-format off
constexpr Chunked chunked[] = {
    // magic  first  id  length  big    header  align  sound   preamble
    {'RIFF',  12,    4,  4,      false, false,  2,     'data', 0},
    {'RIFX',  12,    4,  4,      true,  false,  2,     'data', 0},
    {'RF64',  12,    4,  4,      false, false,  2,     'data', 0},
    {'riff',  40,    16, 8,      false, true,   8,     'data', 0}, // W64
    {'FORM',  12,    4,  4,      true,  false,  2,     'SSND', 8}, // AIFF
    {'FORM',  12,    4,  4,      true,  false,  2,     'BODY', 0}, // 8SVX, 16SV
    {'caff',  8,     4,  8,      true,  false,  1,     'data', 4},
};
// clang-format on

constexpr int mostChunks = 1 << 12; // real files have dozens of chunks

/// Whether a length means "unknown". Programs that write a stream store a length near the largest number.
bool isPlaceholder(UInt64 length, std::size_t lengthBytes)
{
    return lengthBytes == 4 ? length >= 0x7FFFF000 : length >= 0x7FFFFFFFFFFFF000;
}

StatedData stated(SInt64 start, UInt64 bytes, std::size_t lengthBytes)
{
    StatedData data;
    data.start = start;
    if (!isPlaceholder(bytes, lengthBytes)) data.bytes = static_cast<SInt64>(bytes);
    return data;
}

/// Get the file offset at which libsndfile's input ends; 0 for the whole file. The end of some files is
/// hidden, because libsndfile refuses WAV and AIFF files with trailing bytes, decodes chunks after the
/// samples of a W64 file as samples, and loops on an 8SVX file with many chunks after the samples.
SInt64 endOfForm(ByteReader& file, const Chunked& kind, const StatedData& data)
{
    if (kind.magic == 'RF64' || kind.magic == 'caff') return 0;
    if (data.bytes == 0 || data.bytes >= file.size() - data.start) return 0;
    const SInt64 sound = (data.start + data.bytes + 1) / 2 * 2;
    constexpr SInt64 formHeader = 8;
    const bool endsWithSound = kind.magic == 'riff' || kind.sound == 'BODY';
    const SInt64 form =
        endsWithSound ? 0 : formHeader + static_cast<SInt64>(file.number(4, 4, kind.isBigEndian));
    return std::min(file.size(), std::max(sound, form));
}

/// Whether the length of the sound chunk must be replaced, because libsndfile refuses a truncated CAF file
/// and finds no samples in a WAV file whose lengths were never filled in.
bool needsPatch(ByteReader& file, const Chunked& kind, const StatedData& data)
{
    if (kind.magic == 'caff') return data.bytes > file.size() - data.start;
    constexpr SInt64 beforeForm = 8; // size of the file's first id and length, not counted by that length
    return (kind.magic == 'RIFF' || kind.magic == 'RIFX') && data.bytes == 0 && data.start < file.size() &&
           static_cast<SInt64>(file.number(4, 4, kind.isBigEndian)) + beforeForm <= data.start;
}

/// Make a patch of the length field of the chunk at an offset: the length from the body to the end of the
/// file.
Patch trueLength(ByteReader& file, const Chunked& kind, SInt64 chunk, SInt64 body)
{
    Patch patch{chunk + static_cast<SInt64>(kind.idBytes), kind.lengthBytes, {}};
    const UInt64 most = kind.lengthBytes == 4 ? 0xFFFFFFFF : ~UInt64{0};
    const UInt64 bytes = std::min(static_cast<UInt64>(file.size() - body), most);
    for (std::size_t i = 0; i < patch.size; ++i) {
        const std::size_t shift = 8 * (kind.isBigEndian ? patch.size - 1 - i : i);
        patch.bytes[i] = static_cast<UInt8>(bytes >> shift);
    }
    return patch;
}

StatedData soundChunk(ByteReader& file, const Chunked& kind)
{
    const auto headerBytes = static_cast<SInt64>(kind.idBytes + kind.lengthBytes);
    UInt64 wideLength = 0; // data length that an RF64 file states in an earlier 'ds64' chunk
    SInt64 at = kind.firstChunk;
    for (int i = 0; at <= file.size() - headerBytes; ++i) {
        if (i == mostChunks) {
            StatedData none;
            none.hasTooManyChunks = true;
            return none;
        }
        const UInt32 id = file.word(at);
        UInt64 length =
            file.number(at + static_cast<SInt64>(kind.idBytes), kind.lengthBytes, kind.isBigEndian);
        if (kind.countsHeader) length -= std::min(length, static_cast<UInt64>(headerBytes));
        const SInt64 body = at + headerBytes;
        if (id == 'ds64') wideLength = file.number(body + 8, 8, false);
        if (id == kind.sound) {
            const bool isWide = length == 0xFFFFFFFF && wideLength > 0;
            StatedData data = stated(body, isWide ? wideLength : length, isWide ? 8 : kind.lengthBytes);
            data.end = endOfForm(file, kind, data);
            if (needsPatch(file, kind, data)) data.length = trueLength(file, kind, at, body);
            data.start += kind.preamble;
            data.bytes = std::max<SInt64>(data.bytes - kind.preamble, 0);
            return data;
        }
        if (length > static_cast<UInt64>(file.size())) break;
        const SInt64 end = body + static_cast<SInt64>(length);
        at = (end + kind.alignment - 1) / kind.alignment * kind.alignment;
    }
    return {};
}

} // namespace

StatedData statedData(ByteReader& file)
{
    const UInt32 magic = file.word(0);
    if (magic == '.snd') return stated(static_cast<SInt64>(file.word(4)), file.word(8), 4);
    StatedData data;
    for (const Chunked& kind : chunked)
        if (kind.magic == magic && data.start == 0) data = soundChunk(file, kind);
    return data;
}

} // namespace kvxplatform::audiofile
