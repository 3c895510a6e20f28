// Double buffering: the client fills one buffer while the component plays the other buffer.
#pragma once

#include "host/soundclient/sample_bytes.h"
#include "host/soundclient/sound_output.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace soundclient {

/// A source that plays PCM16 samples in the rate and channels of the component. Call feed() and start(), then
/// feed() at least once per duration of a buffer.
/// Errors  every function throws Refusal.
/// [main]
class DoubleBuffer {
public:
    /// Writes up to `frames` interleaved frames to `samples`, and returns the number of frames, which is less
    /// than `frames` only at the end. Its exceptions pass through feed().
    using Read = std::function<std::size_t(std::int16_t* samples, std::size_t frames)>;

    /// `frames` is the length of one buffer. The output must outlive the object.
    DoubleBuffer(SoundOutput& output, Labelling labelling, std::size_t frames, Read read);

    /// Stops and removes the source. Queued buffers do not play.
    ~DoubleBuffer();
    DoubleBuffer(const DoubleBuffer&) = delete;
    DoubleBuffer& operator=(const DoubleBuffer&) = delete;

    /// Fill and queue the free buffers.
    void feed();

    void start(); ///< starts or continues playback
    void pause();

    /// Whether the component has taken all frames. The last frames may not be audible yet.
    bool isUsedUp() const;

    /// Whether both buffers were free before the end, which causes a gap in the sound.
    bool hadGap() const;

    std::uint64_t framesRead() const;
    std::uint64_t framesTaken() const; ///< number of frames in the buffers that the component has played

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace soundclient
