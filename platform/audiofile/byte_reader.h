// Random access to a file's bytes through one buffer, for parsers that mostly move forward. A disk error
// reads as the end of the file.
// All functions: [any], one call at a time.
#pragma once

#include <MacTypes.h>

#include <array>
#include <cstddef>

namespace kvxplatform::audiofile {

class ByteReader {
public:
    static constexpr std::size_t mostBytes = 1 << 12; ///< largest byte count that at() accepts

    /// `descriptor` is an open file of `size` bytes. The caller closes the descriptor after the reader's
    /// lifetime.
    ByteReader(int descriptor, SInt64 size) : descriptor_(descriptor), size_(size) {}

    SInt64 size() const { return size_; }

    /// Get `count` bytes at an offset; the pointer is valid until the next call. Returns null if the file
    /// ends before the last byte, or if `count` is above mostBytes.
    const UInt8* at(SInt64 offset, std::size_t count);

    /// Read the unsigned number in 1 to 8 bytes at an offset. Returns 0 if the file ends before the last
    /// byte.
    UInt64 number(SInt64 offset, std::size_t bytes, bool isBigEndian);

    /// Read the big-endian 32-bit number at an offset. Returns 0 if the file ends before the last byte.
    UInt32 word(SInt64 offset) { return static_cast<UInt32>(number(offset, 4, true)); }

    /// Find the first byte equal to `value` at or after `offset`. Returns the byte's offset; size() if no
    /// byte matches.
    SInt64 find(UInt8 value, SInt64 offset);

private:
    const int descriptor_;
    const SInt64 size_;
    SInt64 start_ = 0, count_ = 0; // file offset and byte count of the contents of block_
    std::array<UInt8, 1 << 14> block_;
};

} // namespace kvxplatform::audiofile
