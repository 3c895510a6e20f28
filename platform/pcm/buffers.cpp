#include "platform/pcm/buffers.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace kvxplatform::pcm {

void ListStorage::prepare(UInt32 buffers)
{
    // At least two records, the second one empty: some callbacks silence a pair whatever the count.
    const std::size_t records = buffers < 2 ? 2 : buffers;
    const std::size_t size = offsetof(AudioBufferList, mBuffers) + records * sizeof(AudioBuffer);
    words.assign((size + 7) / 8, 0);
    list().mNumberBuffers = buffers;
}

void Buffers::prepare(const AudioStreamBasicDescription& format, UInt32 frames)
{
    constexpr std::uint64_t unit = 16;
    const UInt32 count = buffersOf(format);
    const std::uint64_t units = (std::uint64_t{frames} * format.mBytesPerFrame + unit - 1) / unit;
    // A list says its bytes in 32 bits; the whole must fit the address space.
    const std::uint64_t most = static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max());
    if (units * unit > std::numeric_limits<UInt32>::max() || units * unit * count > most)
        throw std::bad_alloc();

    storage.prepare(count);
    samples.assign(static_cast<std::size_t>(units * count * unit / 8), 0);
    bufferBytes = static_cast<std::size_t>(units * unit);
    bufferCount = count;
    bufferChannels = channelsPerBuffer(format);
    frameBytes = format.mBytesPerFrame;
}

std::byte* Buffers::memory(UInt32 buffer)
{
    return reinterpret_cast<std::byte*>(samples.data()) + buffer * bufferBytes;
}

AudioBufferList& Buffers::lend(UInt32 frames)
{
    AudioBufferList& list = storage.list();
    list.mNumberBuffers = bufferCount;
    for (UInt32 i = 0; i < bufferCount; ++i)
        list.mBuffers[i] = {bufferChannels, frames * frameBytes, memory(i)};
    return list;
}

void clear(AudioBufferList& list)
{
    for (UInt32 i = 0; i < list.mNumberBuffers; ++i)
        if (list.mBuffers[i].mData) std::memset(list.mBuffers[i].mData, 0, list.mBuffers[i].mDataByteSize);
}

} // namespace kvxplatform::pcm
