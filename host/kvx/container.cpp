#include "host/kvx/container.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string_view>

namespace kvx {
namespace {

/// A container of chunks, one after the other, each an id, a length and a body.
struct Chunked {
    std::string_view magic;   // the file's first bytes
    std::uint64_t firstChunk; // offset in bytes
    std::size_t idBytes;      // of which the first four tell
    std::size_t lengthBytes;  // 4 or 8
    bool isBigEndian;
    bool countsHeader;       // the length includes id and length
    std::uint64_t alignment; // of the next chunk
    std::string_view sound;  // id of the chunk that holds the samples
};

// clang-format off
constexpr Chunked chunked[] = {
    // magic  first  id  length  big    header  align  sound
    {"RIFF",  12,    4,  4,      false, false,  2,     "data"},
    {"RIFX",  12,    4,  4,      true,  false,  2,     "data"},
    {"RF64",  12,    4,  4,      false, false,  2,     "data"},
    {"riff",  40,    16, 8,      false, true,   8,     "data"},  // W64
    {"FORM",  12,    4,  4,      true,  false,  2,     "SSND"},  // AIFF
    {"FORM",  12,    4,  4,      true,  false,  2,     "BODY"},  // 8SVX, 16SV
    {"caff",  8,     4,  8,      true,  false,  1,     "data"},
};
// clang-format on

class Bytes {
public:
    explicit Bytes(const std::string& path) : file_(path, std::ios::binary | std::ios::ate)
    {
        if (file_) length_ = std::uint64_t(file_.tellg());
    }

    std::uint64_t length() const { return length_; }

    std::string at(std::uint64_t offset, std::size_t count)
    {
        std::string bytes(count, '\0');
        file_.clear();
        file_.seekg(std::streamoff(offset));
        file_.read(bytes.data(), std::streamsize(count));
        bytes.resize(std::size_t(file_.gcount()));
        return bytes;
    }

    std::uint64_t number(std::uint64_t offset, std::size_t count, bool isBigEndian)
    {
        std::string bytes = at(offset, count);
        if (!isBigEndian) std::reverse(bytes.begin(), bytes.end());
        std::uint64_t value = 0;
        for (char byte : bytes) value = value << 8 | std::uint8_t(byte);
        return value;
    }

private:
    std::ifstream file_;
    std::uint64_t length_ = 0;
};

// Such lengths stand for "unknown".
bool isPlaceholder(std::uint64_t length, std::size_t lengthBytes)
{
    return lengthBytes == 4 ? length >= 0x7FFFF000 : length >= 0x7FFFFFFFFFFFF000;
}

bool endsTooEarly(Bytes& file, std::uint64_t body, std::uint64_t length, std::size_t lengthBytes)
{
    return !isPlaceholder(length, lengthBytes) && length > file.length() - std::min(body, file.length());
}

bool isChunkedCut(Bytes& file, const Chunked& kind)
{
    std::uint64_t wideLength = 0; // RF64 states the length of its data in an earlier chunk
    const std::uint64_t headerBytes = kind.idBytes + kind.lengthBytes;
    for (std::uint64_t at = kind.firstChunk; at + headerBytes <= file.length();) {
        const std::string id = file.at(at, 4);
        std::uint64_t length = file.number(at + kind.idBytes, kind.lengthBytes, kind.isBigEndian);
        if (kind.countsHeader) length -= std::min(length, headerBytes);
        const std::uint64_t body = at + headerBytes;
        if (id == "ds64") wideLength = file.number(body + 8, 8, false);
        if (id == kind.sound) {
            const bool isWide = length == 0xFFFFFFFF && wideLength > 0;
            return isWide ? endsTooEarly(file, body, wideLength, 8)
                          : endsTooEarly(file, body, length, kind.lengthBytes);
        }
        if (length > file.length()) break;
        at = (body + length + kind.alignment - 1) / kind.alignment * kind.alignment;
    }
    return false;
}

bool isAuCut(Bytes& file) { return endsTooEarly(file, file.number(4, 4, true), file.number(8, 4, true), 4); }

// An Ogg stream marks its last page, which begins within the last 64 KiB, the greatest length of a page.
bool isOggCut(Bytes& file)
{
    constexpr std::uint64_t longestPage = 27 + 255 + 255 * 255;
    constexpr std::size_t flagsAt = 5;
    constexpr unsigned char lastPage = 0x04;
    const std::string tail = file.at(file.length() - std::min(file.length(), longestPage), longestPage);
    const std::size_t page = tail.rfind("OggS");
    return page == tail.npos || page + flagsAt >= tail.size() || !(tail[page + flagsAt] & lastPage);
}

// An MP3 that was written in one piece begins with a frame of no sound that counts the bytes of the stream. A
// tag may stand in front of it.
bool isMp3Cut(Bytes& file)
{
    constexpr std::uint64_t tagHeader = 10;
    constexpr std::uint32_t countsFrames = 1, countsBytes = 2;
    std::uint64_t start = 0;
    if (file.at(0, 3) == "ID3") {
        for (char byte : file.at(6, 4)) start = start << 7 | (std::uint8_t(byte) & 0x7F);
        start += tagHeader;
    }
    const std::string head = file.at(start, 64);
    const std::size_t mark = std::min(head.find("Xing"), head.find("Info"));
    if (head.empty() || std::uint8_t(head[0]) != 0xFF || mark == head.npos) return false;
    const std::uint64_t flags = file.number(start + mark + 4, 4, true);
    if (!(flags & countsBytes)) return false;
    const std::uint64_t promised = file.number(start + mark + 8 + (flags & countsFrames ? 4 : 0), 4, true);
    return endsTooEarly(file, start, promised, 4);
}

} // namespace

bool isCutShort(const std::string& path)
{
    Bytes file(path);
    const std::string magic = file.at(0, 4);
    if (magic == "OggS") return isOggCut(file);
    if (magic == ".snd") return isAuCut(file);
    if (isMp3Cut(file)) return true;
    return std::any_of(std::begin(chunked), std::end(chunked),
                       [&](const Chunked& kind) { return magic == kind.magic && isChunkedCut(file, kind); });
}

} // namespace kvx
