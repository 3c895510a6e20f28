// Buffer lists with memory, allocated once and reused for every slice.
// All functions: [any], one thread at a time. Only prepare() allocates.
#pragma once

#include "platform/pcm/stream_format.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kvxplatform::pcm {

/// Memory for a buffer list without its samples.
class ListStorage {
public:
    /// Allocate a buffer list for `buffers` buffers, with space for at least two. Throws std::bad_alloc.
    void prepare(UInt32 buffers);
    AudioBufferList& list() { return *reinterpret_cast<AudioBufferList*>(words_.data()); }

private:
    std::vector<std::uint64_t> words_;
};

class Buffers {
public:
    /// Allocate buffers for up to `frames` frames of `format`. Throws std::bad_alloc.
    void prepare(const AudioStreamBasicDescription& format, UInt32 frames);
    void release() { *this = Buffers(); }

    /// Returns  a buffer list of `frames` frames that points at the allocated memory, with its samples
    ///          unchanged. Valid until the next call.
    AudioBufferList& list(UInt32 frames);

    std::byte* memory(UInt32 buffer);
    UInt32 bytesPerFrame() const { return frameBytes_; }

private:
    ListStorage storage_;
    std::vector<std::uint64_t> samples_;
    std::size_t bufferBytes_ = 0; ///< size of each buffer in bytes, a multiple of 16
    UInt32 bufferCount_ = 0, bufferChannels_ = 0, frameBytes_ = 0;
};

/// Fill every buffer of a buffer list with zero bytes.
void clear(AudioBufferList& list);

} // namespace kvxplatform::pcm
