// How the bytes of a linear PCM sample encode a number.
// All functions: [any].
#pragma once

#include "platform/pcm/stream_format.h"

#include <cstddef>
#include <cstdint>

namespace kvxplatform::pcm {

/// One sample in its container.
struct SampleLayout {
    UInt32 bytes; ///< of the container
    UInt32 bits;  ///< of the sample
    bool isFloat, isBigEndian, isSigned;
    bool isHigh; ///< the sample has the highest bits of the container
};

SampleLayout layoutOf(const AudioStreamBasicDescription& format);

/// One channel of a list, and the numbers that its samples are read to or written from. Neither needs
/// alignment.
template <class Real>
struct ChannelSpan {
    std::uint8_t* samples;
    std::size_t sampleStride; ///< bytes
    Real* numbers;
    std::size_t numberStride; ///< numbers
    UInt32 frames;
};

/// How samples of a layout are read as numbers and written from them. Integers up to 32 bits are exact as
/// Float64, up to 24 bits as Float32.
template <class Real>
struct SampleCoding {
    using Run = void (*)(const ChannelSpan<Real>&, const SampleLayout&);
    Run read, write;
};

/// Null for a layout that linear PCM does not have. Real is Float32 or Float64.
template <class Real>
const SampleCoding<Real>* codingOf(const SampleLayout& layout);

/// The address of a channel's sample in frame `frame` of a list; null where its buffer has no memory.
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
