// The reference player: computes the output of the buffered player in a plain way, one sample at a time.
// Tests compare the two outputs bit by bit, so the reference player shares no code with the plug-in.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace reference {

/// An output buffer of interleaved 32-bit floats, as bytes. An absent buffer stands for a null address.
struct Buffer {
    std::uint32_t channels;
    std::vector<unsigned char> bytes;
    bool isAbsent;
};

/// The output of one slice. A render call writes to the first `inUse` buffers. The size of the first buffer
/// gives the number of frames, even if `inUse` is 0.
struct Slice {
    std::vector<Buffer> buffers;
    std::size_t inUse;
};

class Player {
public:
    // The host program sets these fields.
    float sampleRate = 44100;
    int numberOfChannels = 1;
    bool noUnderflow = false;
    bool hadUnderflow = false;
    bool stopRequested = false;

    // start() sets these fields.
    float deviceSampleRate = 44100;
    bool isRunning = false;

    // render() changes these fields.
    double position = 0;
    double relativePosition = 0;
    std::int64_t base = 0; ///< index of the first sample of the buffer `current`
    std::optional<std::vector<float>> current;
    std::deque<std::vector<float>> waiting;

    /// The device functions that the player calls, in order.
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
