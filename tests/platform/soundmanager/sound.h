// Helpers for tests of the mixer: sample formats and conversions, an open mixer, and buffers that count their
// completions.
#pragma once

#include <Carbon/Carbon.h>

#include <functional>
#include <thread>
#include <vector>

namespace test {

using Bytes = std::vector<Byte>;
/// Interleaved samples with the full scale -1 to +1.
using Samples = std::vector<double>;

/// A sample format of a buffer or mixer.
struct Form {
    OSType format = k16BitLittleEndianFormat;
    short bits = 16;
    short channels = 2;
    double hertz = 44100;
};

SoundComponentData describe(const Form& form, long frames = 1024);
std::size_t frameBytes(const Form& form);

/// Reference conversions between bytes and samples, written independently of the library's code.
Samples decode(const Form& form, const Bytes& bytes);
Bytes encode(const Form& form, const Samples& samples);

/// Convert a channel count: mono is copied to both channels, and stereo becomes the mean of its channels.
Samples fold(const Samples& samples, int from, int to);

/// Make pseudo-random samples over the whole range of a format.
Bytes noise(const Form& form, std::size_t frames, unsigned seed = 1);

/// A buffer to play. The mixer uses the buffer's memory until the buffer is completed, or its source is
/// stopped or removed.
class Buffer {
public:
    Buffer(const Form& form, Bytes samples);
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    SoundParamBlock block;
    Bytes samples;
    int completions = 0;
    short result = -1;      ///< result in the parameter block when the completion routine runs
    std::thread::id thread; ///< thread that calls the completion routine
    std::function<void()> onCompletion;
};

/// An open mixer, with helpers that play sounds and collect the output.
class Mixer {
public:
    explicit Mixer(const Form& form = {}, long blockFrames = 1024);
    ~Mixer();
    Mixer(const Mixer&) = delete;
    Mixer& operator=(const Mixer&) = delete;

    SoundSource add();
    ComponentResult play(SoundSource source, Buffer& buffer, long actions = 0);
    ComponentResult start(SoundSource source) { return SoundComponentStartSource(instance, 1, &source); }
    ComponentResult stop(SoundSource source) { return SoundComponentStopSource(instance, 1, &source); }
    ComponentResult pause(SoundSource source) { return SoundComponentPauseSource(instance, 1, &source); }

    /// Fetch the next block of output.
    /// Returns  the block; empty when no source plays.
    Bytes fetch();

    /// Fetch blocks until a block is empty.
    /// Returns  the output of all blocks.
    Bytes fetchAll();

    /// Play `samples` with `source`.
    /// Returns  the whole output until no source plays.
    Bytes playAll(SoundSource source, const Form& form, const Bytes& samples);

    ComponentInstance instance = nullptr;
    const Form form;
};

/// Returns  the number of live objects of a kind.
long liveCount(const char* kind);

} // namespace test
