// How the bytes of a linear PCM sample make a number: what reading, writing and copying samples share.
#pragma once

#include "platform/pcm/stream_format.h"

#include <cstddef>
#include <cstdint>

namespace kvxplatform::pcm {

/// Where a sample's bits are in the bytes that hold it.
struct SampleLayout {
    UInt32 bytes; // of one sample
    UInt32 bits;
    bool isFloat, isBigEndian, isSigned, isHigh;
};

SampleLayout layoutOf(const AudioStreamBasicDescription& format);

/// One channel of a list: samples `stride` bytes apart, and numbers `step` apart that belong to them. Neither
/// need be aligned.
template <class Real>
struct Strand {
    std::uint8_t* bytes;
    std::size_t stride;
    Real* numbers;
    std::size_t step;
    UInt32 frames;
};

/// How to read samples as numbers and write numbers as samples. Integers up to 32 bits are exact as Float64,
/// up to 24 bits as Float32.
template <class Real>
struct Coding {
    using Run = void (*)(const Strand<Real>&, const SampleLayout&);
    Run read, write;
};

/// Null for a sample that is none of linear PCM. Real is Float32 or Float64.
template <class Real>
const Coding<Real>* codingOf(const SampleLayout& layout);

/// The address of a channel's first sample in frame `first` of a list; null where its buffer has no memory.
inline std::uint8_t* sampleAt(const AudioStreamBasicDescription& format, const AudioBufferList& list,
                              UInt32 channel, UInt32 first)
{
    const bool interleaved = isInterleaved(format);
    auto* bytes = static_cast<std::uint8_t*>(list.mBuffers[interleaved ? 0 : channel].mData);
    if (!bytes) return nullptr;
    const std::size_t offset =
        interleaved ? std::size_t{channel} * (format.mBytesPerFrame / format.mChannelsPerFrame) : 0;
    return bytes + std::size_t{first} * format.mBytesPerFrame + offset;
}

} // namespace kvxplatform::pcm
