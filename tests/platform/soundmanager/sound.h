// Classic sound for tests: formats and samples, an open mixer, buffers that count their completions.
#pragma once

#include <Carbon/Carbon.h>

#include <functional>
#include <thread>
#include <vector>

namespace test {

using Bytes = std::vector<Byte>;
/// Interleaved samples, full scale -1..+1.
using Samples = std::vector<double>;

/// A sample format.
struct Form {
    OSType format = k16BitLittleEndianFormat;
    short bits = 16;
    short channels = 2;
    double hertz = 44100;
};

SoundComponentData describe(const Form& form, long frames = 1024);
std::size_t frameBytes(const Form& form);

/// Reference conversions, written from the descriptions of the formats.
Samples decode(const Form& form, const Bytes& bytes);
Bytes encode(const Form& form, const Samples& samples);

/// Mono to both channels of stereo; stereo to its mean.
Samples fold(const Samples& samples, int from, int to);

/// Pseudo-random samples over the whole range.
Bytes noise(const Form& form, std::size_t frames, unsigned seed = 1);

/// A buffer to play. The mixer uses its memory until it has been completed, stopped or removed.
class Buffer {
public:
    Buffer(const Form& form, Bytes samples);
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    SoundParamBlock block;
    Bytes samples;
    int completions = 0;
    short result = -1;      ///< the block's at completion
    std::thread::id thread; ///< of the completion
    std::function<void()> onCompletion;
};

/// An open mixer and its output.
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

    /// Fetch the next block; empty when nothing plays.
    Bytes fetch();

    /// Fetch blocks until one is empty.
    Bytes fetchAll();

    /// Play `samples` with `source`; returns all output until nothing plays.
    Bytes playAll(SoundSource source, const Form& form, const Bytes& samples);

    ComponentInstance instance = nullptr;
    const Form form;
};

/// The live-object count of a kind.
long liveCount(const char* kind);

} // namespace test
