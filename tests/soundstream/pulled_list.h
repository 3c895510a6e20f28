// The AudioBufferList of a render call, with memory for three buffers whatever the buffer count.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace soundstream_test {

class PulledList {
public:
    static constexpr std::size_t capacity = 3;
    static constexpr unsigned char before = 0x5A; ///< initial value of every byte in the buffers

    explicit PulledList(UInt32 count, UInt32 frames = 8)
    {
        list()->mNumberBuffers = count;
        for (std::size_t i = 0; i < capacity; ++i) {
            // The memory has two frames more than the buffer's size, as a guard.
            memory_[i].assign((frames + 2) * sizeof(float), before);
            buffer(i) = {1, frames * UInt32{sizeof(float)}, memory_[i].data()};
        }
    }
    PulledList(const PulledList&) = delete;
    PulledList& operator=(const PulledList&) = delete;

    AudioBufferList* list() { return reinterpret_cast<AudioBufferList*>(words_); }
    AudioBuffer& buffer(std::size_t index) { return list()->mBuffers[index]; }
    float sample(std::size_t index, std::size_t frame)
    {
        return reinterpret_cast<const float*>(memory_[index].data())[frame];
    }

    /// Whether all bytes of the buffer are zero and the guard bytes after the buffer are unchanged.
    bool isSilent(std::size_t index) { return isSilentFor(index, buffer(index).mDataByteSize); }
    bool isSilentFor(std::size_t index, std::size_t bytes) const
    {
        const auto& all = memory_[index];
        const auto end = all.begin() + static_cast<std::ptrdiff_t>(bytes);
        return std::all_of(all.begin(), end, [](unsigned char byte) { return byte == 0; }) &&
               std::all_of(end, all.end(), [](unsigned char byte) { return byte == before; });
    }
    bool isUntouched(std::size_t index) const { return isSilentFor(index, 0); }

private:
    alignas(AudioBufferList) unsigned char words_[sizeof(AudioBufferList) +
                                                  (capacity - 1) * sizeof(AudioBuffer)] = {};
    std::vector<unsigned char> memory_[capacity];
};

} // namespace soundstream_test
