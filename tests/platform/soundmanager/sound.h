// Classic sound for tests: forms and samples, an open mixer, buffers that note how they end.
#pragma once

#include <Carbon/Carbon.h>

#include <functional>
#include <thread>
#include <vector>

namespace test {

using Bytes = std::vector<Byte>;
/// Interleaved samples, full scale -1..+1.
using Samples = std::vector<double>;

/// The form of samples.
struct Form {
    OSType format = k16BitLittleEndianFormat;
    short bits = 16;
    short channels = 2;
    double hertz = 44100;
};

SoundComponentData describe(const Form& form, long frames = 1024);
std::size_t frameBytes(const Form& form);

/// As a reader of the formats' descriptions would write it, one sample after the other.
Samples decode(const Form& form, const Bytes& bytes);
Bytes encode(const Form& form, const Samples& samples);

/// One channel into two, two into their mean.
Samples fold(const Samples& samples, int from, int to);

/// Samples that never repeat soon, over the whole range.
Bytes noise(const Form& form, std::size_t frames, unsigned seed = 1);

/// A buffer to play. It stays where it is until it has ended.
class Buffer {
public:
    Buffer(const Form& form, Bytes samples);
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    SoundParamBlock block;
    Bytes samples;
    int ends = 0;         // completions
    short endResult = -1; // what the block said then
    std::thread::id endThread;
    std::function<void()> atEnd; // runs inside the completion
};

/// A mixer, and the bytes that come out of it.
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

    /// The next block; empty when nothing plays.
    Bytes pull();

    /// Blocks until nothing plays.
    Bytes pullAll();

    /// Add `samples` to what `source` plays, and give all that comes out until nothing plays.
    Bytes playAll(SoundSource source, const Form& form, const Bytes& samples);

    ComponentInstance instance = nullptr;
    const Form form;
};

/// How many objects of a kind are alive.
long alive(const char* kind);

} // namespace test
