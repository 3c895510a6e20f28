#include "platform/audiofile/mpeg_frames.h"

#include "platform/audiofile/tags.h"

#include <algorithm>

namespace kvxplatform::audiofile {
namespace {

constexpr int streamHeaders = 4;       // number of consecutive frame headers that make a stream
constexpr UInt32 mostFreeBytes = 3456; // size of the largest free-format frame that decoders accept
constexpr SInt64 decoderDelay = 529;   // delay of a layer III decoder, in samples

/// The numbers in an info frame (Xing, Info, VBRI). An info frame has no audio; it describes its stream.
struct Info {
    SInt64 frames = 0; ///< number of frames in the stream; 0: not stated
    SInt64 bytes = 0;  ///< size of the stream, including the info frame; 0: not stated
    bool hasDelay = false;
    SInt64 delay = 0, padding = 0; ///< samples per channel that the encoder added at the start and at the end
};

class Finder {
public:
    explicit Finder(ByteReader& file) : file_(file) {}

    MpegFrames find(SInt64 offset)
    {
        SInt64 at = afterTags(file_, offset);
        freeBytes_ = freeFormatBytes(at);
        while (at < file_.size() && found_.spans.size() < FileView::mostSpans) {
            MpegHeader header;
            if (isStreamStart(at) && headerAt(at, header))
                at = afterTags(file_, takeStream(at, header));
            else
                at = nextStreamStart(at);
        }
        found_.isCutShort = found_.statedCount > found_.count && missesBytes_;
        trim();
        return std::move(found_);
    }

private:
    bool headerAt(SInt64 at, MpegHeader& out) { return readMpegHeader(file_.word(at), out, freeBytes_); }

    bool isWhole(SInt64 at, const MpegHeader& header) { return at + header.bytes <= file_.size(); }

    bool isStreamStart(SInt64 at)
    {
        MpegHeader first, header;
        if (!headerAt(at, first) || !isWhole(at, first)) return false;
        for (int headers = 0; headers < streamHeaders; ++headers) {
            if (headers > 0 && (at == file_.size() || tagBytes(file_, at) > 0)) return true;
            if (headers > 1 && at + 4 > file_.size()) return true; // a truncated frame ends the file
            if (!headerAt(at, header) || !isSameStream(first, header)) return false;
            at += header.bytes;
        }
        return true;
    }

    /// Find the first stream at or after `at`. Returns its offset; the file's size if there is no stream.
    SInt64 nextStreamStart(SInt64 at)
    {
        at = file_.find(0xFF, at);
        while (at < file_.size() && !isStreamStart(at)) at = file_.find(0xFF, at + 1);
        return at;
    }

    /// Find the size of free-format frames without padding, which only the distance between two headers
    /// states. Returns 0 for other streams, and for frames too short for audio, because a decoder would
    /// search such a file for a very long time.
    UInt32 freeFormatBytes(SInt64 at)
    {
        MpegHeader first, next;
        if (!readMpegHeader(file_.word(at), first, 1) || !first.isFreeFormat) return 0;
        const UInt32 padding = first.bytes - 1;
        for (UInt32 bytes = 4; bytes <= mostFreeBytes; ++bytes) {
            if (!readMpegHeader(file_.word(at + bytes + padding), next, bytes) || !isSameStream(first, next))
                continue;
            freeBytes_ = bytes;
            if (isStreamStart(at)) return bytes < infoOffset(first) ? 0 : bytes;
        }
        return 0;
    }

    /// Read the stream at `at`. Its frames are taken if they match the first stream of the file; otherwise
    /// they are skipped. Returns the offset after the stream.
    SInt64 takeStream(SInt64 at, const MpegHeader& first)
    {
        const bool isTaken = found_.first.bytes == 0 || isSameStream(found_.first, first);
        if (!isTaken && (otherStream_.bytes == 0 || !isSameStream(otherStream_, first)))
            ++found_.otherStreams;
        otherStream_ = isTaken ? MpegHeader{} : first;

        MpegHeader header;
        SInt64 last = at;
        for (; headerAt(at, header) && isSameStream(header, first) && isWhole(at, header);
             at += header.bytes) {
            last = at;
            if (isTaken && !takeInfo(at, header)) takeFrame(at, header);
        }
        if (at == file_.size() || tagBytes(file_, at) > 0 || isStreamStart(at)) return at;
        // If the last frame is truncated, the next stream or tag begins inside that frame.
        for (SInt64 next = last + 1; next < at; ++next) {
            if (file_.word(next) >> 8 != 'ID3 ' >> 8 && !isStreamStart(next)) continue;
            if (isTaken) dropFrame(last);
            return next;
        }
        return at;
    }

    void takeFrame(SInt64 at, const MpegHeader& header)
    {
        if (found_.first.bytes == 0) found_.first = header;
        ++found_.count;
        found_.largestBytes = std::max(found_.largestBytes, header.bytes);
        std::vector<Span>& spans = found_.spans;
        if (!spans.empty() && spans.back().start + spans.back().bytes == at)
            spans.back().bytes += header.bytes;
        else
            spans.push_back({at, header.bytes});
    }

    void dropFrame(SInt64 at)
    {
        if (found_.spans.empty()) return;
        Span& span = found_.spans.back();
        if (at >= span.start + span.bytes) return; // the last frame was an info frame, which has no span
        --found_.count;
        span.bytes = at - span.start;
        if (span.bytes == 0) found_.spans.pop_back();
        if (found_.count == 0) found_.first = {};
    }

    bool takeInfo(SInt64 at, const MpegHeader& header)
    {
        Info info;
        if (!readXing(at, header, info) && !readVbri(at, header, info)) return false;
        ++infoFrames_;
        lastInfo_ = info;
        found_.statedCount += info.frames;
        missesBytes_ |= info.frames > 0 && (info.bytes == 0 || info.bytes > file_.size() - at);
        return true;
    }

    /// Read a number of an info frame. Returns 0 for the placeholder of an encoder that writes a stream.
    SInt64 statedAt(SInt64 offset)
    {
        const UInt32 number = file_.word(offset);
        return number == 0xFFFFFFFF ? 0 : number;
    }

    bool readXing(SInt64 at, const MpegHeader& header, Info& info)
    {
        if (header.layer != 3) return false;
        const SInt64 name = at + infoOffset(header), end = at + header.bytes;
        if (name + 8 > end || (file_.word(name) != 'Xing' && file_.word(name) != 'Info')) return false;
        const UInt32 flags = file_.word(name + 4); // one bit for each field: frames, bytes, table, quality
        SInt64 field = name + 8;
        if (flags & 1) info.frames = statedAt(field);
        if (flags & 2) info.bytes = statedAt(field + (flags & 1) * 4);
        constexpr SInt64 fieldBytes[] = {4, 4, 100, 4};
        for (int i = 0; i < 4; ++i) field += flags >> i & 1 ? fieldBytes[i] : 0;
        // Offset of the delay, after the name and the settings of the encoder.
        constexpr SInt64 delayOffset = 21;
        if (field + delayOffset + 3 > end || file_.number(field, 1, true) == 0) return true;
        const UInt64 both = file_.number(field + delayOffset, 3, true); // delay and padding, 12 bits each
        info.hasDelay = true;
        info.delay = static_cast<SInt64>(both >> 12);
        info.padding = static_cast<SInt64>(both & 0xFFF);
        return true;
    }

    bool readVbri(SInt64 at, const MpegHeader& header, Info& info)
    {
        constexpr SInt64 nameOffset = 36, bytesOffset = nameOffset + 10, framesOffset = bytesOffset + 4;
        if (header.layer != 3 || header.bytes < framesOffset + 4 || file_.word(at + nameOffset) != 'VBRI')
            return false;
        info.bytes = statedAt(at + bytesOffset);
        info.frames = statedAt(at + framesOffset);
        return true;
    }

    /// Exclude the encoder's delay and padding if the only info frame states the length of the whole stream.
    void trim()
    {
        const SInt64 all = found_.count * found_.first.samples;
        found_.samples = all;
        if (infoFrames_ != 1 || !lastInfo_.hasDelay || lastInfo_.frames != found_.count) return;
        const SInt64 start = lastInfo_.delay + decoderDelay;
        const SInt64 end = std::min(all, all - lastInfo_.padding + decoderDelay);
        if (start >= end) return;
        found_.lead = start;
        found_.samples = end - start;
    }

    ByteReader& file_;
    MpegFrames found_;
    MpegHeader otherStream_; // first header of the stream just skipped; 0 bytes: the last stream was taken
    UInt32 freeBytes_ = 0;
    int infoFrames_ = 0;
    bool missesBytes_ = false; // true if an info frame states no bytes, or more bytes than the file has
    Info lastInfo_;
};

} // namespace

MpegFrames findMpegFrames(ByteReader& file, SInt64 offset) { return Finder(file).find(offset); }

} // namespace kvxplatform::audiofile
