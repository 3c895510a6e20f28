// What a rate unit has pulled from its input and not left behind yet. Frames have numbers, from 0 at the
// start.
//
// A unit that changes the rate pulls ahead of what is heard. When it becomes neutral again, what it pulled
// ahead is played from here before anything more is pulled: nothing is skipped, nothing is heard twice. While
// it has never pulled ahead, frames only pass through, and the tape has no room.
#pragma once

#include "platform/audiounit/unit.h"

#include <memory>

namespace kvxplatform::audiounit {

class InputTape {
public:
    /// How frames are pulled during a slice, and what became of it.
    struct Request {
        Unit& unit;
        AudioUnitRenderActionFlags& flags;
        const AudioTimeStamp& time; // of the slice
        OSStatus status = noErr;    // of the last pull that failed: what it left out is silence
        UInt32 pulled = 0;
    };

    /// Make ready for a format, without room. Throws std::bad_alloc.
    void prepare(const AudioStreamBasicDescription& format);

    /// Room for that many frames, all of it touched, so that no slice waits for pages. Throws std::bad_alloc.
    /// Thread [any], with settings: once, before the first voice is handed over, which is the first to use
    /// it.
    void makeRoom(double frames);
    bool hasRoom() const { return memory != nullptr; }

    /// Frame 0 is the next one; the input knows it as `time`.
    void start(Float64 time);

    /// The frames that are here: [begin, end).
    std::int64_t begin() const { return first; }
    std::int64_t end() const { return last; }

    UInt32 channels() const { return channelCount; }

    /// Pull until there are frames up to `until`. Where room ends, the oldest go. Allocates nothing.
    void pullUntil(Request& request, std::int64_t until);

    /// Pull `frames` frames behind the end past the tape, which must be empty: into `out`, untouched.
    void pullThrough(Request& request, Float32* const* out, UInt32 frames);

    /// Leave behind what lies in front of a frame.
    void forget(std::int64_t before);

    /// Frames from `frame` on as they lie in memory, each channel at `out[channel]`: at most `most`, at least
    /// one. `frame` is one that is here.
    UInt32 look(std::int64_t frame, UInt32 most, const Float32** out) const;

    /// Copy frames that are here.
    void copy(std::int64_t frame, UInt32 frames, Float32* const* out) const;
    void copyChannel(UInt32 channel, std::int64_t frame, UInt32 frames, Float32* out) const;

private:
    void pullPiece(Request& request, UInt32 first, UInt32 frames);

    std::unique_ptr<Float32[]> memory; // channel after channel, each a ring
    std::size_t room = 0;              // frames, a power of 2
    pcm::ListStorage list;             // what is pulled into
    UInt32 channelCount = 0;
    Float64 sampleRate = 0;
    std::int64_t first = 0, last = 0;
    Float64 startTime = 0;
};

} // namespace kvxplatform::audiounit
