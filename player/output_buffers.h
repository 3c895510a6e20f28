// The output buffers of one slice, which is the output of one I/O cycle. A write outside a buffer, or to a
// buffer without memory, does nothing.
// All functions: [audio].
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace player {

class OutputBuffers {
public:
    explicit OutputBuffers(AudioBufferList& list) : list_(list) {}

    /// Return the number of frames in the first buffer, or 0 if that buffer has no channels.
    UInt32 frames() const
    {
        const AudioBuffer& first = list_.mBuffers[0];
        return first.mNumberChannels ? first.mDataByteSize / sizeof(float) / first.mNumberChannels : 0;
    }

    bool isEmpty() const { return list_.mNumberBuffers == 0; }

    void silence()
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b)
            if (AudioBuffer& buffer = list_.mBuffers[b]; buffer.mData)
                std::memset(buffer.mData, 0, buffer.mDataByteSize);
    }

    /// Write one mono frame to all channels of every buffer.
    void writeMono(UInt32 frame, float value)
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b) writeMono(list_.mBuffers[b], frame, value);
    }

    /// Write one stereo frame to the first two channels of every buffer.
    void writeStereo(UInt32 frame, float left, float right)
    {
        const float pair[] = {left, right};
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b) writeStereo(list_.mBuffers[b], frame, pair);
    }

    /// Write `frames` mono frames, at least one, to all channels of every buffer, beginning at frame `first`.
    void writeMono(UInt32 first, UInt32 frames, const float* values);

    /// Write `frames` interleaved stereo frames, at least one, to the first two channels of every buffer,
    /// beginning at frame `first`.
    void writeStereo(UInt32 first, UInt32 frames, const float* values);

    /// Return the address for rendering stereo directly into the output, from frame `first` on. Returns null
    /// unless the output is a single buffer with at least two channels and enough memory.
    float* directStereo(UInt32 first, UInt32 frames)
    {
        const bool isDirect = list_.mNumberBuffers == 1 && channels() >= 2;
        return isDirect ? addressOf(list_.mBuffers[0], 2, first, frames) : nullptr;
    }

    /// Return the number of channels of the first buffer.
    UInt32 channels() const { return list_.mBuffers[0].mNumberChannels; }

private:
    /// The number of samples in a stereo frame that a buffer takes. A buffer with one channel takes the left
    /// sample.
    static UInt32 stereoSamples(const AudioBuffer& buffer) { return buffer.mNumberChannels == 1 ? 1 : 2; }

    /// Return the address of frame `first` in `buffer`. Returns null unless the first `samples` samples of
    /// all `frames` frames are inside the buffer.
    static float* addressOf(const AudioBuffer& buffer, UInt32 samples, UInt32 first, UInt32 frames)
    {
        const std::uint64_t last = std::uint64_t{first} + frames - 1;
        const std::uint64_t end = last * buffer.mNumberChannels + samples;
        if (!buffer.mData || end > buffer.mDataByteSize / sizeof(float)) return nullptr;
        return static_cast<float*>(buffer.mData) + std::size_t{first} * buffer.mNumberChannels;
    }

    /// The samples of a frame that are inside its buffer.
    struct Samples {
        float* address;
        std::size_t count;
    };

    /// Return the part of the first `samples` samples of a frame that is inside the buffer.
    static Samples samplesInside(const AudioBuffer& buffer, UInt32 frame, UInt32 samples)
    {
        const std::uint64_t start = std::uint64_t{frame} * buffer.mNumberChannels;
        const std::uint64_t size = buffer.mDataByteSize / sizeof(float);
        if (!buffer.mData || start >= size) return {};
        return {static_cast<float*>(buffer.mData) + static_cast<std::size_t>(start),
                static_cast<std::size_t>(std::min<std::uint64_t>(samples, size - start))};
    }

    static void writeMono(AudioBuffer& buffer, UInt32 frame, float value)
    {
        const Samples inside = samplesInside(buffer, frame, buffer.mNumberChannels);
        for (std::size_t i = 0; i < inside.count; ++i) inside.address[i] = value;
    }

    static void writeStereo(AudioBuffer& buffer, UInt32 frame, const float* pair)
    {
        const Samples inside = samplesInside(buffer, frame, stereoSamples(buffer));
        for (std::size_t i = 0; i < inside.count; ++i) inside.address[i] = pair[i];
    }

    AudioBufferList& list_;
};

} // namespace player
