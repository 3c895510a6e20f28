// A plain reimplementation of the buffered player's rendering, one sample at a time. Tests compare the player
// with it bit for bit, so it shares no code with the plug-in.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace reference {

/// An output buffer: bytes of interleaved 32-bit floats. An absent buffer has no memory.
struct Buffer {
    std::uint32_t channels;
    std::vector<unsigned char> bytes;
    bool isAbsent;
};

/// The output of one slice. Only the first `inUse` buffers are listed; the first buffer gives the number of
/// frames even if none is listed.
struct Slice {
    std::vector<Buffer> buffers;
    std::size_t inUse;
};

class Player {
public:
    // Set by the host.
    float sampleRate = 44100;
    int numberOfChannels = 1;
    bool noUnderflow = false;
    bool hadUnderflow = false;
    bool stopRequested = false;

    // Set by start().
    float deviceSampleRate = 44100;
    bool isRunning = false;

    // Changed by render().
    double position = 0;
    double relativePosition = 0;
    std::int64_t base = 0; ///< index of the first sample of `current`
    std::optional<std::vector<float>> current;
    std::deque<std::vector<float>> waiting;

    /// The player's calls of the device, in order.
    std::vector<std::string> calls;

    void start(float rateOfDevice);
    void render(Slice& slice);

private:
    bool takeNext();
    float sample(std::int64_t index);
    void leaveDevice();
    void silence(Slice& slice) const;
    void renderMono(Slice& slice, std::uint32_t frames);
    void renderStereo(Slice& slice, std::uint32_t frames);
};

} // namespace reference
