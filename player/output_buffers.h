// The output buffers of one slice, which is the output of one I/O cycle. A write outside a buffer, or to a
// buffer without memory, does nothing.
// All functions: [audio].
#pragma once

#include "player/integer_to_float.h"

#include <CoreAudio/CoreAudio.h>

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
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b)
            for (UInt32 c = 0; c < list_.mBuffers[b].mNumberChannels; ++c)
                write(list_.mBuffers[b], frame, c, value);
    }

    /// Write one stereo frame to the first two channels of every buffer.
    void writeStereo(UInt32 frame, float left, float right)
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b) writePair(list_.mBuffers[b], frame, left, right);
    }

    /// Write `frames` mono frames to all channels of every buffer, beginning at frame `first`.
    void writeMono(UInt32 first, UInt32 frames, const float* values)
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b)
            if (float* mono = framesIn(list_.mBuffers[b], 1, first, frames))
                std::memcpy(mono, values, frames * sizeof(float));
            else if (float* pairs = framesIn(list_.mBuffers[b], 2, first, frames))
                interleave(values, values, frames, pairs);
            else
                for (UInt32 i = 0; i < frames; ++i)
                    for (UInt32 c = 0; c < list_.mBuffers[b].mNumberChannels; ++c)
                        write(list_.mBuffers[b], first + i, c, values[i]);
    }

    /// Write `frames` interleaved stereo frames to the first two channels of every buffer, beginning at frame
    /// `first`.
    void writeStereo(UInt32 first, UInt32 frames, const float* values)
    {
        for (UInt32 b = 0; b < list_.mNumberBuffers; ++b)
            if (float* pairs = framesIn(list_.mBuffers[b], 2, first, frames))
                std::memcpy(pairs, values, 2 * frames * sizeof(float));
            else
                for (UInt32 i = 0; i < frames; ++i)
                    writePair(list_.mBuffers[b], first + i, values[2 * i], values[2 * i + 1]);
    }

    /// Return the address for rendering stereo directly into the output, from frame `first` on. Returns null
    /// unless the output is a single buffer with two channels and enough memory.
    float* directStereo(UInt32 first, UInt32 frames)
    {
        return list_.mNumberBuffers == 1 ? framesIn(list_.mBuffers[0], 2, first, frames) : nullptr;
    }

private:
    /// Return the address of frame `first` in `buffer`. Returns null unless the buffer has exactly `channels`
    /// channels and memory for all `frames` frames.
    static float* framesIn(AudioBuffer& buffer, UInt32 channels, UInt32 first, UInt32 frames)
    {
        const std::uint64_t end = (std::uint64_t{first} + frames) * channels * sizeof(float);
        if (!buffer.mData || buffer.mNumberChannels != channels || end > buffer.mDataByteSize) return nullptr;
        return static_cast<float*>(buffer.mData) + std::size_t{first} * channels;
    }

    static void writePair(AudioBuffer& buffer, UInt32 frame, float left, float right)
    {
        write(buffer, frame, 0, left);
        if (buffer.mNumberChannels != 1) write(buffer, frame, 1, right);
    }

    static void write(AudioBuffer& buffer, UInt32 frame, UInt32 channel, float value)
    {
        const std::uint64_t index = std::uint64_t{frame} * buffer.mNumberChannels + channel;
        if (buffer.mData && index < buffer.mDataByteSize / sizeof(float))
            static_cast<float*>(buffer.mData)[index] = value;
    }

    AudioBufferList& list_;
};

} // namespace player
