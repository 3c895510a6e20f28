#include "platform/audiofile/byte_reader.h"

#include <unistd.h>

namespace kvxplatform::audiofile {

const UInt8* ByteReader::at(SInt64 offset, std::size_t count)
{
    const auto bytes = static_cast<SInt64>(count);
    if (offset < 0 || count > mostBytes || offset > size_ - bytes) return nullptr;
    if (offset < start_ || offset + bytes > start_ + have_) {
        start_ = offset;
        have_ = pread(descriptor_, block_.data(), block_.size(), offset);
    }
    return offset + bytes <= start_ + have_ ? &block_[static_cast<std::size_t>(offset - start_)] : nullptr;
}

UInt64 ByteReader::number(SInt64 offset, std::size_t bytes, bool isBigEndian)
{
    const UInt8* from = at(offset, bytes);
    UInt64 value = 0;
    for (std::size_t i = 0; from && i < bytes; ++i)
        value = value << 8 | from[isBigEndian ? i : bytes - 1 - i];
    return value;
}

} // namespace kvxplatform::audiofile
