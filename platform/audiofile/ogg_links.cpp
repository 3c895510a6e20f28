#include "platform/audiofile/ogg_links.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kvxplatform::audiofile {
namespace {

constexpr SInt64 pageHeader = 27; // size of a page header before the table of segment sizes, in bytes
// Page flag of a stream's first page. A link begins with the first pages of all its streams.
constexpr UInt8 firstPage = 0x02;

struct Page {
    SInt64 bytes = 0; ///< size of the page; 0: not a page
    Span body;
    UInt32 stream = 0; ///< serial number of the page's stream
    bool isFirst = false;
    bool isWhole = false; ///< true if a page or the end of the file follows the page directly
};

Page pageAt(ByteReader& file, SInt64 offset)
{
    const UInt8* header = file.at(offset, pageHeader);
    if (!header || std::memcmp(header, "OggS", 5) != 0) return {}; // the fifth byte is the version number, 0
    Page page;
    page.isFirst = header[5] & firstPage;
    const std::size_t segments = header[26];
    page.stream = file.word(offset + 14);
    page.body.start = offset + pageHeader + static_cast<SInt64>(segments);
    const UInt8* sizes = file.at(offset + pageHeader, segments);
    if (!sizes) return {};
    for (std::size_t i = 0; i < segments; ++i) page.body.bytes += sizes[i];
    page.bytes = page.body.start + page.body.bytes - offset;
    return page;
}

/// Find the first page at or after `offset`. Returns its offset; the file's size if there is no page.
SInt64 nextPage(ByteReader& file, SInt64 offset)
{
    offset = file.find('O', offset);
    while (offset < file.size() && pageAt(file, offset).bytes == 0) offset = file.find('O', offset + 1);
    return offset;
}

/// Parse the page at an offset. Returns the offset after the page. If no page follows at the stated end, the
/// page was truncated or is followed by other bytes; the page then ends where the next page begins.
SInt64 takePage(ByteReader& file, SInt64 offset, Page& page)
{
    page = pageAt(file, offset);
    if (page.bytes == 0) return nextPage(file, offset + 1);
    const SInt64 end = offset + page.bytes;
    page.isWhole = end == file.size() || pageAt(file, end).bytes > 0;
    if (page.isWhole) return end;
    const SInt64 next = nextPage(file, offset + 1);
    page.body.bytes = std::clamp<SInt64>(next - page.body.start, 0, page.body.bytes);
    return next;
}

/// Get the size of the mapping header before the FLAC data in the body of a stream's first page; 0 for
/// another coding.
SInt64 bytesBeforeFlac(ByteReader& file, const Page& page)
{
    constexpr SInt64 mapping = 9; // size of the mapping header: name, version and number of headers
    const UInt8* body = page.isFirst ? file.at(page.body.start, mapping + 4) : nullptr;
    const bool isFlac = body &&
                        std::memcmp(body,
                                    "\x7F"
                                    "FLAC",
                                    5) == 0 &&
                        std::memcmp(body + mapping, "fLaC", 4) == 0;
    return isFlac && page.body.bytes > mapping ? mapping : 0;
}

/// A link whose pages are being read. A link is one of the Ogg files that were joined into this file.
struct Link {
    SInt64 start = 0;
    bool isFlac = false;
    UInt32 flacStream = 0;
    std::vector<Span> flac; // page bodies of the FLAC stream

    void add(ByteReader& file, const Page& page)
    {
        const SInt64 skipped = isFlac ? 0 : bytesBeforeFlac(file, page);
        if (skipped > 0) {
            isFlac = true;
            flacStream = page.stream;
        }
        if (isFlac && page.stream == flacStream && flac.size() < FileView::mostSpans)
            flac.push_back({page.body.start + skipped, page.body.bytes - skipped});
    }

    std::vector<Span> spans(SInt64 end)
    {
        return isFlac ? std::move(flac) : std::vector<Span>{{start, end - start}};
    }
};

} // namespace

OggLinks oggLinks(ByteReader& file, SInt64 offset)
{
    OggLinks found;
    Link link;
    const auto finishLink = [&](SInt64 end) {
        if (found.links.size() < OggLinks::mostLinks)
            found.links.push_back(link.spans(end));
        else
            ++found.omitted;
        link = {};
        link.start = end;
    };
    link.start = offset;
    bool wasFirst = true;
    for (SInt64 at = offset; at < file.size();) {
        Page page;
        const SInt64 next = takePage(file, at, page);
        if (page.isFirst && !wasFirst) finishLink(at);
        if (page.bytes > 0) {
            wasFirst = page.isFirst && page.isWhole;
            link.add(file, page);
        }
        at = next;
    }
    finishLink(file.size());
    return found;
}

} // namespace kvxplatform::audiofile
