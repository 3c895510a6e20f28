// What libsndfile sees of a file: spans of it in a row, as one virtual file.
//
// Thread [any], one call at a time.
#pragma once

#include <MacTypes.h>

#include <sndfile.h>

#include <array>
#include <cstddef>
#include <vector>

namespace kvxplatform::audiofile {

/// Bytes of a file, from an offset on.
struct Span {
    SInt64 start = 0, bytes = 0;
};

/// Bytes that a decoder reads instead of those in the file, for a length field that the file misses.
struct Patch {
    SInt64 start = 0; ///< offset in the file
    std::size_t size = 0;
    std::array<UInt8, 8> bytes{};
};

class FileView {
public:
    /// Bounds the table of a hostile file; music in as many spans is longer than a day.
    static constexpr std::size_t mostSpans = 1 << 18;

    /// `descriptor` stays the caller's and outlives this. `statedBytes`: the length that the view claims,
    /// where that is more than it holds. Throws std::bad_alloc.
    FileView(int descriptor, std::vector<Span> spans, const Patch& patch = {}, SInt64 statedBytes = 0);

    /// Open a decoder at the beginning; null as sf_open. This outlives the result and stays at its address.
    SNDFILE* open(SF_INFO& info);

    /// Whether the disk could not be read since the last open.
    bool hasFailed() const { return hasFailed_; }

private:
    static SF_VIRTUAL_IO calls();
    static FileView& of(void* user) { return *static_cast<FileView*>(user); }
    SInt64 seek(SInt64 offset, int whence);
    SInt64 read(UInt8* out, SInt64 bytes);
    SInt64 readSpan(UInt8* out, SInt64 bytes);
    void applyPatch(UInt8* out, SInt64 fileOffset, SInt64 bytes) const;

    int descriptor_;
    std::vector<Span> spans_;
    std::vector<SInt64> ends_; // of each span, as an offset in the view
    Patch patch_;
    SInt64 statedBytes_;
    SInt64 position_ = 0;
    bool hasFailed_ = false;
};

} // namespace kvxplatform::audiofile
