// The input that a rate unit has pulled and may still need, in a ring buffer. The first frame after the start
// has number 0.
//
// A rate engine pulls input ahead of its output. When the unit becomes neutral again, the input that was
// pulled ahead is rendered from this history first, so that no frame is skipped or repeated. Until an engine
// is needed, input passes directly to the output and the history has no memory.
#pragma once

#include "platform/audiounit/unit.h"

#include <memory>

namespace kvxplatform::audiounit {

// All functions but prepare(), allocate() and isAllocated(): [audio & rendering].
class InputHistory {
public:
    /// The render call during which input is pulled.
    struct Call {
        Unit& unit;
        AudioUnitRenderActionFlags& flags;
        const AudioTimeStamp& time; ///< time stamp of the slice
        /// The status of the last pull that failed. The frames of such a pull are silence.
        OSStatus status = noErr;
        UInt32 pulled = 0; ///< number of frames pulled so far in this call
    };

    /// Set the format, without allocating memory for frames. Throws std::bad_alloc.
    /// [any & stopped]
    void prepare(const AudioStreamBasicDescription& format);

    /// Allocate memory for at least `frames` frames, before the first engine is published. Touches every
    /// page, so that rendering causes no page fault. The caller holds the `settings` lock. Throws
    /// std::bad_alloc.
    /// [any]
    void allocate(double frames);
    bool isAllocated() const { return memory_ != nullptr; }

    /// Start with frame 0 as the next frame to pull, at sample time `time` of the input.
    void start(Float64 time);

    /// The range of frames in the history: [begin, end).
    std::int64_t begin() const { return first_; }
    std::int64_t end() const { return end_; }

    UInt32 channels() const { return channels_; }

    /// Pull frames until end() is at least `end`. When the ring buffer is full, new frames overwrite the
    /// oldest ones.
    void pullUntil(Call& call, std::int64_t end);

    /// Pull the next `frames` frames directly into `out`, planar. The history must be empty and stays empty.
    void pullThrough(Call& call, Float32* const* out, UInt32 frames);

    /// Drop all frames before frame `before`.
    void forget(std::int64_t before);

    /// Set out[channel] to the samples that begin at frame `frame`, which the history must contain.
    /// Returns  how many frames are contiguous from there: at least 1, at most `maxFrames`.
    UInt32 look(std::int64_t frame, UInt32 maxFrames, const Float32** out) const;

    /// Copy frames that the history contains.
    void copy(std::int64_t frame, UInt32 frames, Float32* const* out) const;
    void copyChannel(UInt32 channel, std::int64_t frame, UInt32 frames, Float32* out) const;

private:
    void pullInto(Call& call, UInt32 offset, UInt32 frames);
    std::size_t indexOf(std::int64_t frame) const
    {
        return static_cast<std::size_t>(frame) & (capacity_ - 1);
    }

    std::unique_ptr<Float32[]> memory_; ///< planar samples; the memory of each channel is a ring buffer
    std::size_t capacity_ = 0;          ///< capacity of a channel's ring buffer in frames, a power of 2
    pcm::ListStorage list_;             ///< buffer list that a pull writes to
    UInt32 channels_ = 0;
    Float64 sampleRate_ = 0;
    std::int64_t first_ = 0, end_ = 0;
    Float64 startTime_ = 0;
};

} // namespace kvxplatform::audiounit
