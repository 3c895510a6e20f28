// The input that a rate unit has pulled and may still need, in a ring buffer. Frames are numbered from 0 at
// the start.
//
// A rate engine pulls input ahead of its output. When the unit becomes neutral again, the input that was
// pulled ahead is rendered from here first: no frame is skipped or repeated. Until an engine is needed, input
// passes straight to the output and the history has no memory.
#pragma once

#include "platform/audiounit/unit.h"

#include <memory>

namespace kvxplatform::audiounit {

// All functions but prepare() and allocate(): [audio & rendering].
class InputHistory {
public:
    /// A render call, which pulls input.
    struct Call {
        Unit& unit;
        AudioUnitRenderActionFlags& flags;
        const AudioTimeStamp& time; ///< of the slice
        OSStatus status = noErr;    ///< of the last pull that failed; its frames are silence
        UInt32 pulled = 0;          ///< frames in this call
    };

    /// Set the format; no memory is allocated for frames. Throws std::bad_alloc.
    /// [any & stopped]
    void prepare(const AudioStreamBasicDescription& format);

    /// Allocate at least `frames` frames, before the first engine is published. Touches every page, so that
    /// rendering causes no page fault. Throws std::bad_alloc.
    /// [any], with settings
    void allocate(double frames);
    bool isAllocated() const { return memory_ != nullptr; }

    /// Frame 0 is the next one, at sample time `time` of the input.
    void start(Float64 time);

    /// The frames held: [begin, end).
    std::int64_t begin() const { return first_; }
    std::int64_t end() const { return end_; }

    UInt32 channels() const { return channels_; }

    /// Pull frames until end() is at least `end`. The oldest frames are overwritten when the ring is full.
    void pullUntil(Call& call, std::int64_t end);

    /// Pull the next `frames` frames straight into `out`, planar. The history must be empty and stays so.
    void pullThrough(Call& call, Float32* const* out, UInt32 frames);

    /// Drop the frames before a frame.
    void forget(std::int64_t before);

    /// Set out[channel] to the samples at `frame`, which is held.
    /// Returns  how many frames are contiguous there: at least 1, at most `maxFrames`.
    UInt32 look(std::int64_t frame, UInt32 maxFrames, const Float32** out) const;

    /// Copy frames that are held.
    void copy(std::int64_t frame, UInt32 frames, Float32* const* out) const;
    void copyChannel(UInt32 channel, std::int64_t frame, UInt32 frames, Float32* out) const;

private:
    void pullInto(Call& call, UInt32 offset, UInt32 frames);
    std::size_t indexOf(std::int64_t frame) const
    {
        return static_cast<std::size_t>(frame) & (capacity_ - 1);
    }

    std::unique_ptr<Float32[]> memory_; ///< planar; each channel is a ring
    std::size_t capacity_ = 0;          ///< frames, a power of 2
    pcm::ListStorage list_;             ///< where a pull writes
    UInt32 channels_ = 0;
    Float64 sampleRate_ = 0;
    std::int64_t first_ = 0, end_ = 0;
    Float64 startTime_ = 0;
};

} // namespace kvxplatform::audiounit
