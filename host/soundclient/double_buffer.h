// Two buffers that are filled in turn: while one is played, the program fills the other.
#pragma once

#include "host/soundclient/sample_bytes.h"
#include "host/soundclient/sound_output.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace soundclient {

/// A source of an output, fed with 16-bit samples in the output's own rate and channels.
///
/// Order   feed() and start(); then feed() again and again, at least once for each buffer's length.
/// Thread  [main]; the buffers come back on the audio thread, which only marks them.
class DoubleBuffer {
public:
    /// Puts up to `frames` frames into `samples`, interleaved; fewer at the end only. Returns how many. What
    /// it throws passes through feed().
    using Read = std::function<std::size_t(std::int16_t* samples, std::size_t frames)>;

    /// `frames`: of one buffer. The output must outlive it. Throws Refusal.
    DoubleBuffer(SoundOutput& output, Labelling labelling, std::size_t frames, Read read);

    /// Stops and removes the source: nothing that waits is heard any more.
    ~DoubleBuffer();
    DoubleBuffer(const DoubleBuffer&) = delete;
    DoubleBuffer& operator=(const DoubleBuffer&) = delete;

    /// Fill what has come back, and queue it. Throws Refusal.
    void feed();

    void start(); ///< or go on. Throws Refusal
    void pause(); ///< likewise

    /// All has been read and taken; what was taken last may not have been heard yet.
    bool isUsedUp() const;

    /// Both buffers came back before all had been read: the sound had a gap.
    bool hadGap() const;

    std::uint64_t framesRead() const;
    std::uint64_t framesTaken() const; ///< in whole buffers

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace soundclient
