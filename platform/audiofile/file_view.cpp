#include "platform/audiofile/file_view.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include <unistd.h>

namespace kvxplatform::audiofile {

namespace {
constexpr SInt64 lastTag = 128; // number of bytes at the end of a file, where a decoder first looks for a tag
}

FileView::FileView(int descriptor, std::vector<Span> spans, const Patch& patch, SInt64 statedBytes)
    : descriptor_(descriptor), spans_(std::move(spans)), patch_(patch), statedBytes_(statedBytes)
{
    SInt64 end = 0;
    for (const Span& span : spans_) ends_.push_back(end += span.bytes);
    statedBytes_ = std::max(statedBytes_, end);
}

SNDFILE* FileView::open(SF_INFO& info)
{
    position_ = 0;
    hasFailed_ = false;
    SF_VIRTUAL_IO io = calls();
    return sf_open_virtual(&io, SFM_READ, &info, this);
}

SF_VIRTUAL_IO FileView::calls()
{
    SF_VIRTUAL_IO io = {};
    io.get_filelen = [](void* user) -> sf_count_t { return of(user).statedBytes_; };
    io.seek = [](sf_count_t offset, int whence, void* user) -> sf_count_t {
        return of(user).seek(offset, whence);
    };
    io.read = [](void* out, sf_count_t bytes, void* user) -> sf_count_t {
        return of(user).read(static_cast<UInt8*>(out), bytes);
    };
    io.write = [](const void*, sf_count_t, void*) -> sf_count_t { return 0; };
    io.tell = [](void* user) -> sf_count_t { return of(user).position_; };
    return io;
}

SInt64 FileView::seek(SInt64 offset, int whence)
{
    const SInt64 base = whence == SEEK_CUR ? position_ : whence == SEEK_END ? statedBytes_ : 0;
    SInt64 to = 0;
    if (!__builtin_add_overflow(base, offset, &to) && to >= 0) position_ = to;
    return position_;
}

SInt64 FileView::read(UInt8* out, SInt64 bytes)
{
    const SInt64 available = ends_.empty() ? 0 : ends_.back();
    if (statedBytes_ > available && position_ == statedBytes_ - lastTag && bytes > 0 && bytes <= lastTag) {
        std::memset(out, 0, static_cast<std::size_t>(bytes)); // zeros, in which the decoder finds no tag
        position_ += bytes;
        return bytes;
    }
    SInt64 done = 0;
    while (done < bytes) {
        const SInt64 got = readSpan(out + done, bytes - done);
        if (got <= 0) break;
        done += got;
        position_ += got;
    }
    return done;
}

/// Read up to `bytes` bytes from the span at the position. Returns the number of bytes read: 0 past the last
/// span, negative if the disk cannot be read.
SInt64 FileView::readSpan(UInt8* out, SInt64 bytes)
{
    const auto end = std::upper_bound(ends_.begin(), ends_.end(), position_);
    if (end == ends_.end()) return 0;
    const Span& span = spans_[static_cast<std::size_t>(end - ends_.begin())];
    const SInt64 offset = span.start + span.bytes - (*end - position_);
    const auto count = static_cast<std::size_t>(std::min(bytes, *end - position_));
    const SInt64 got = pread(descriptor_, out, count, offset);
    if (got < 0) hasFailed_ = true;
    applyPatch(out, offset, got);
    return got;
}

void FileView::applyPatch(UInt8* out, SInt64 fileOffset, SInt64 bytes) const
{
    for (std::size_t i = 0; i < patch_.size; ++i) {
        const SInt64 at = patch_.start + static_cast<SInt64>(i) - fileOffset;
        if (at >= 0 && at < bytes) out[at] = patch_.bytes[i];
    }
}

} // namespace kvxplatform::audiofile
