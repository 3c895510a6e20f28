#include "platform/audiofile/ogg_links.h"

#include <algorithm>
#include <cstring>

namespace kvxplatform::audiofile {
namespace {

constexpr std::size_t mostLinks = 4096;
constexpr SInt64 pageHeader = 27; // bytes before the table of segment sizes
constexpr UInt8 firstPage = 0x02; // of a stream; those of all streams of a link stand together

struct Page {
    SInt64 bytes = 0; ///< 0: no page begins there
    bool isFirst = false;
};

Page pageAt(ByteReader& file, SInt64 offset)
{
    const UInt8* header = file.at(offset, pageHeader);
    if (!header || std::memcmp(header, "OggS", 5) != 0) return {}; // the fifth is the version, 0
    const bool isFirst = header[5] & firstPage;
    const std::size_t segments = header[26];
    const UInt8* sizes = file.at(offset + pageHeader, segments);
    if (!sizes) return {};
    SInt64 bytes = pageHeader + static_cast<SInt64>(segments);
    for (std::size_t i = 0; i < segments; ++i) bytes += sizes[i];
    return {bytes, isFirst};
}

/// The first page from an offset on; the file's size if there is none.
SInt64 nextPage(ByteReader& file, SInt64 offset)
{
    while (offset < file.size()) {
        const auto count = static_cast<std::size_t>(
            std::min<SInt64>(file.size() - offset, static_cast<SInt64>(ByteReader::mostBytes)));
        const UInt8* bytes = file.at(offset, count);
        if (!bytes) return file.size();
        const auto* capital = static_cast<const UInt8*>(std::memchr(bytes, 'O', count));
        offset += capital ? capital - bytes : static_cast<SInt64>(count);
        if (!capital) continue;
        if (pageAt(file, offset).bytes > 0) return offset;
        ++offset;
    }
    return offset;
}

} // namespace

std::vector<Span> oggLinks(ByteReader& file, SInt64 offset)
{
    std::vector<Span> links{{offset, 0}};
    bool wasFirst = true;
    for (SInt64 at = offset; at < file.size();) {
        const Page page = pageAt(file, at);
        if (page.bytes == 0) {
            at = nextPage(file, at);
            continue;
        }
        if (page.isFirst && !wasFirst && links.size() < mostLinks) {
            links.back().bytes = at - links.back().start;
            links.push_back({at, 0});
        }
        wasFirst = page.isFirst;
        at += page.bytes;
    }
    links.back().bytes = file.size() - links.back().start;
    return links;
}

} // namespace kvxplatform::audiofile
