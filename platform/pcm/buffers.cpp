#include "platform/pcm/buffers.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace kvxplatform::pcm {

void ListStorage::prepare(UInt32 buffers)
{
    // Some callbacks silence two buffers whatever the buffer count is, so the list always has a second, empty
    // record.
    const std::size_t records = buffers < 2 ? 2 : buffers;
    const std::size_t size = offsetof(AudioBufferList, mBuffers) + records * sizeof(AudioBuffer);
    words_.assign((size + 7) / 8, 0);
    list().mNumberBuffers = buffers;
}

void Buffers::prepare(const AudioStreamBasicDescription& format, UInt32 frames)
{
    constexpr std::uint64_t alignment = 16;
    const UInt32 count = buffersOf(format);
    const std::uint64_t wholeBytes = std::uint64_t{frames} * format.mBytesPerFrame;
    const std::uint64_t bytes = (wholeBytes + alignment - 1) / alignment * alignment;
    // A buffer list stores the byte size of a buffer in 32 bits.
    const std::uint64_t most = static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max());
    if (bytes > std::numeric_limits<UInt32>::max() || bytes * count > most) throw std::bad_alloc();

    storage_.prepare(count);
    samples_.assign(static_cast<std::size_t>(bytes * count / 8), 0);
    bufferBytes_ = static_cast<std::size_t>(bytes);
    bufferCount_ = count;
    bufferChannels_ = channelsPerBuffer(format);
    frameBytes_ = format.mBytesPerFrame;
}

std::byte* Buffers::memory(UInt32 buffer)
{
    return reinterpret_cast<std::byte*>(samples_.data()) + buffer * bufferBytes_;
}

AudioBufferList& Buffers::list(UInt32 frames)
{
    AudioBufferList& list = storage_.list();
    list.mNumberBuffers = bufferCount_;
    for (UInt32 i = 0; i < bufferCount_; ++i)
        list.mBuffers[i] = {bufferChannels_, frames * frameBytes_, memory(i)};
    return list;
}

void clear(AudioBufferList& list)
{
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
        if (list.mBuffers[i].mData) std::memset(list.mBuffers[i].mData, 0, list.mBuffers[i].mDataByteSize);
}

} // namespace kvxplatform::pcm
