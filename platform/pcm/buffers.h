// Buffer lists with memory of their own, prepared once and lent out slice by slice.
#pragma once

#include "platform/pcm/stream_format.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kvxplatform::pcm {

/// Memory for a buffer list of `buffers` buffers, at least two.
class ListStorage {
public:
    void prepare(UInt32 buffers);
    AudioBufferList& list() { return *reinterpret_cast<AudioBufferList*>(words.data()); }

private:
    std::vector<std::uint64_t> words;
};

class Buffers {
public:
    /// Memory for slices of up to `frames` frames of `format`. Throws std::bad_alloc.
    void prepare(const AudioStreamBasicDescription& format, UInt32 frames);
    void release() { *this = Buffers(); }

    /// The list for a slice of `frames` frames, its buffers pointing at the memory, which keeps what it held.
    /// Allocates nothing.
    AudioBufferList& lend(UInt32 frames);

    std::byte* memory(UInt32 buffer);
    UInt32 bytesPerFrame() const { return frameBytes; }

private:
    ListStorage storage;
    std::vector<std::uint64_t> samples;
    std::size_t bufferBytes = 0; // of each buffer, a multiple of 16
    UInt32 bufferCount = 0, bufferChannels = 0, frameBytes = 0;
};

/// Bytes of a slice, in each buffer.
inline UInt32 bytesOf(const AudioStreamBasicDescription& format, UInt32 frames)
{
    return frames * format.mBytesPerFrame;
}

/// Silence in every buffer of a list.
void clear(AudioBufferList& list);

} // namespace kvxplatform::pcm
