// The buffered player's render step, written a second time: plainly, one sample after the other, in
// structures of its own. The tests compare the real one with it, bit for bit. It shares no code with the
// plug-in, on purpose.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace reference {

/// An output buffer: interleaved 32-bit floats, as bytes. `isAbsent` is one without memory.
struct Buffer {
    std::uint32_t channels;
    std::vector<unsigned char> bytes;
    bool isAbsent;
};

/// A slice to fill. The first buffer gives the number of frames, even if only the first `inUse` buffers are
/// listed, and none is.
struct Slice {
    std::vector<Buffer> buffers;
    std::size_t inUse;
};

class Player {
public:
    // As the host sets them.
    float sampleRate = 44100;
    int numberOfChannels = 1;
    bool noUnderflow = false;
    bool hadUnderflow = false;
    bool stopRequested = false;

    // As the device has them.
    float deviceSampleRate = 44100;
    bool isRunning = false;

    // What playing changes.
    double position = 0;
    double relativePosition = 0;
    std::int64_t base = 0; ///< index of the first sample of `current`
    std::optional<std::vector<float>> current;
    std::deque<std::vector<float>> waiting;

    /// What the player asked of the device, call after call.
    std::vector<std::string> calls;

    void start(float rateOfDevice);
    void render(Slice& slice);

private:
    bool takeNext();
    float sample(std::int64_t index);
    void leave();
    void beSilent(Slice& slice) const;
    void renderMono(Slice& slice, std::uint32_t frames);
    void renderStereo(Slice& slice, std::uint32_t frames);
};

} // namespace reference
