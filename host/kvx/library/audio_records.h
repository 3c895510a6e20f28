// Values of properties that are records, as they lie in memory. The machine's own byte order and alignment.
#pragma once

#include <cstdint>

namespace kvx {

struct ValueRange {
    double minimum, maximum;
};

struct StreamFormat {
    double rate; ///< Hz
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

/// As long as `count` says.
struct BufferList {
    std::uint32_t count;
    Buffer buffers[1];
};

/// A value in memory of the asker's, and where the answer goes.
struct Translation {
    void* question;
    std::uint32_t questionBytes;
    void* answer;
    std::uint32_t answerBytes;
};

struct ChannelLayout {
    std::uint32_t tag, bitmap, descriptionCount; ///< descriptions follow
};

} // namespace kvx
