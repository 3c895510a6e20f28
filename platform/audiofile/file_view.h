// A virtual file for libsndfile: spans of a file on disk, one after another.
// One call at a time.
// All functions: [any].
#pragma once

#include <MacTypes.h>

#include <sndfile.h>

#include <array>
#include <cstddef>
#include <vector>

namespace kvxplatform::audiofile {

/// A span of consecutive bytes of a file.
struct Span {
    SInt64 start = 0, bytes = 0;
};

/// Replacement bytes for a length field that is wrong in the file.
struct Patch {
    SInt64 start = 0; ///< file offset of the first replaced byte
    std::size_t size = 0;
    std::array<UInt8, 8> bytes{};
};

class FileView {
public:
    /// Largest number of spans, which bounds the memory that a hostile file can claim. Music in this many
    /// spans lasts more than a day.
    static constexpr std::size_t mostSpans = 1 << 18;

    /// The caller closes `descriptor` after the view's lifetime. The view reports `statedBytes` as the length
    /// of the virtual file if that is more than the spans have. Throws std::bad_alloc.
    FileView(int descriptor, std::vector<Span> spans, const Patch& patch = {}, SInt64 statedBytes = 0);

    /// Open a decoder at the first byte. Returns null if libsndfile cannot open the virtual file. The view
    /// outlives the decoder, and must not move in memory before the decoder is closed.
    SNDFILE* open(SF_INFO& info);

    /// Whether a read from the disk has failed since the last open().
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
    std::vector<SInt64> ends_; // end of each span, as an offset in the virtual file
    Patch patch_;
    SInt64 statedBytes_;
    SInt64 position_ = 0;
    bool hasFailed_ = false;
};

} // namespace kvxplatform::audiofile
