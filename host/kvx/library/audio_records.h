// Property values that are records, with the byte order and alignment of the platform's own records.
#pragma once

#include <cstdint>

namespace kvx {

struct ValueRange {
    double minimum, maximum;
};

struct StreamFormat {
    double rate; ///< sample rate, Hz
    std::uint32_t format, flags;
    std::uint32_t bytesPerPacket, framesPerPacket, bytesPerFrame;
    std::uint32_t channels, bits;
    std::uint32_t reserved;
};

struct RangedFormat {
    StreamFormat format;
    ValueRange rates;
};

struct Buffer {
    std::uint32_t channels, bytes;
    void* data;
};

/// A list of `count` buffers. The array is declared with its first element only.
struct BufferList {
    std::uint32_t count;
    Buffer buffers[1];
};

/// A value to translate and the memory for its translation. Both blocks belong to the caller.
struct Translation {
    void* question;
    std::uint32_t questionBytes;
    void* answer;
    std::uint32_t answerBytes;
};

struct ChannelLayout {
    std::uint32_t tag, bitmap, descriptionCount; ///< the channel descriptions follow in memory
};

} // namespace kvx
