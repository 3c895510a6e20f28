// Double buffering: the client fills one buffer while the sound component plays the other buffer.
#pragma once

#include "host/soundclient/sample_bytes.h"
#include "host/soundclient/sound_output.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace soundclient {

/// Plays PCM16 samples, in the sample rate and channels of the sound component, through a source (a queue
/// of buffers in the component). Call feed() and start(), then feed() once per duration of a buffer or more.
/// Errors  the constructor, feed(), start() and pause() throw Refusal.
/// [main]
class DoubleBuffer {
public:
    /// Writes up to `frames` interleaved frames to `samples`. Exceptions pass through feed().
    /// Returns  the number of written frames, which is less than `frames` only at the end of the sound.
    using Read = std::function<std::size_t(std::int16_t* samples, std::size_t frames)>;

    /// Add a source. `frames` is the length of one buffer. `output` must outlive the object.
    DoubleBuffer(SoundOutput& output, Labelling labelling, std::size_t frames, Read read);

    /// Stop and remove the source. Buffers that still wait in the queue do not play.
    ~DoubleBuffer();
    DoubleBuffer(const DoubleBuffer&) = delete;
    DoubleBuffer& operator=(const DoubleBuffer&) = delete;

    /// Fill the buffers that are not in the queue, and add them to the queue.
    void feed();

    void start(); ///< starts or continues playback
    void pause();

    /// Whether the component has taken all frames of the sound. The last frames may not be audible yet.
    bool isUsedUp() const;

    /// Whether both buffers were out of the queue before the end of the sound, which causes a gap.
    bool hadGap() const;

    std::uint64_t framesRead() const;  ///< number of frames that the function Read has written
    std::uint64_t framesTaken() const; ///< number of frames in the buffers that the component has played

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace soundclient
