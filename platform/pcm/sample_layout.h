// How the bytes of a linear PCM sample encode a number.
// All functions: [any].
#pragma once

#include "platform/pcm/stream_format.h"

#include <cstddef>
#include <cstdint>

namespace kvxplatform::pcm {

/// The layout of one sample in its container.
struct SampleLayout {
    UInt32 bytes; ///< size of the container
    UInt32 bits;  ///< width of the sample
    bool isFloat, isBigEndian, isSigned;
    bool isHigh; ///< true if the sample occupies the highest bits of the container
};

SampleLayout layoutOf(const AudioStreamBasicDescription& format);

/// One channel of a buffer list, and the numbers that are read from or written to its samples. Neither
/// pointer needs alignment.
template <class Real>
struct ChannelSpan {
    std::uint8_t* samples;
    std::size_t sampleStride; ///< distance between two samples in bytes
    Real* numbers;
    std::size_t numberStride; ///< distance between two numbers, counted in numbers
    UInt32 frames;
};

/// The functions that read samples of a layout as numbers and write numbers as samples. Float64 represents
/// integers of up to 32 bits exactly, Float32 those of up to 24 bits.
template <class Real>
struct SampleCoding {
    using Run = void (*)(const ChannelSpan<Real>&, const SampleLayout&);
    Run read, write;
};

/// Returns  the coding of a sample layout; null if linear PCM does not have that layout. Real is Float32 or
///          Float64.
template <class Real>
const SampleCoding<Real>* codingOf(const SampleLayout& layout);

/// Returns  the address of a channel's sample in frame `frame` of a buffer list; null if its buffer has no
///          memory.
inline std::uint8_t* sampleAt(const AudioStreamBasicDescription& format, const AudioBufferList& list,
                              UInt32 channel, UInt32 frame)
{
    const bool interleaved = isInterleaved(format);
    auto* const memory = static_cast<std::uint8_t*>(list.mBuffers[interleaved ? 0 : channel].mData);
    if (!memory) return nullptr;
    const std::size_t offset =
        interleaved ? std::size_t{channel} * (format.mBytesPerFrame / format.mChannelsPerFrame) : 0;
    return memory + std::size_t{frame} * format.mBytesPerFrame + offset;
}

} // namespace kvxplatform::pcm
