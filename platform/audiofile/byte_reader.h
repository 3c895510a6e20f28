// Random access to a file's bytes through one block buffer, for parsers that mostly move forward. A disk
// error reads as the end of the file. All functions: [any], one call at a time.
#pragma once

#include <MacTypes.h>

#include <array>
#include <cstddef>

namespace kvxplatform::audiofile {

class ByteReader {
public:
    static constexpr std::size_t mostBytes = 1 << 12; ///< largest count of at()

    /// `descriptor` stays the caller's and outlives this reader. The file has `size` bytes.
    ByteReader(int descriptor, SInt64 size) : descriptor_(descriptor), size_(size) {}

    SInt64 size() const { return size_; }

    /// `count` bytes at an offset, valid until the next call; null if the file ends before the last of them.
    const UInt8* at(SInt64 offset, std::size_t count);

    /// The unsigned number in 1 to 8 bytes at an offset; 0 past the end.
    UInt64 number(SInt64 offset, std::size_t bytes, bool isBigEndian);

    /// The big-endian 32-bit number at an offset; 0 past the end.
    UInt32 word(SInt64 offset) { return static_cast<UInt32>(number(offset, 4, true)); }

    /// The offset of the first byte equal to `value` at or after `offset`; size() if there is none.
    SInt64 find(UInt8 value, SInt64 offset);

private:
    const int descriptor_;
    const SInt64 size_;
    SInt64 start_ = 0, count_ = 0; // the span of the file in the block
    std::array<UInt8, 1 << 14> block_;
};

} // namespace kvxplatform::audiofile
