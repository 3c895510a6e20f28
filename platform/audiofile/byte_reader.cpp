#include "platform/audiofile/byte_reader.h"

#include <algorithm>
#include <cstring>

#include <unistd.h>

namespace kvxplatform::audiofile {

const UInt8* ByteReader::at(SInt64 offset, std::size_t count)
{
    const auto bytes = static_cast<SInt64>(count);
    if (offset < 0 || count > mostBytes || offset > size_ - bytes) return nullptr;
    if (offset < start_ || offset + bytes > start_ + count_) {
        start_ = offset;
        count_ = pread(descriptor_, block_.data(), block_.size(), offset);
    }
    return offset + bytes <= start_ + count_ ? &block_[static_cast<std::size_t>(offset - start_)] : nullptr;
}

UInt64 ByteReader::number(SInt64 offset, std::size_t bytes, bool isBigEndian)
{
    const UInt8* from = at(offset, bytes);
    UInt64 value = 0;
    for (std::size_t i = 0; from && i < bytes; ++i)
        value = value << 8 | from[isBigEndian ? i : bytes - 1 - i];
    return value;
}

SInt64 ByteReader::find(UInt8 value, SInt64 offset)
{
    while (offset < size_) {
        const SInt64 count = std::min(size_ - offset, static_cast<SInt64>(mostBytes));
        const UInt8* bytes = at(offset, static_cast<std::size_t>(count));
        if (!bytes) return size_;
        const auto* found =
            static_cast<const UInt8*>(std::memchr(bytes, value, static_cast<std::size_t>(count)));
        if (found) return offset + (found - bytes);
        offset += count;
    }
    return size_;
}

} // namespace kvxplatform::audiofile
