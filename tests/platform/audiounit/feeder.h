// A source of known samples, in any PCM format, written by an encoder of its own; it notes what it was asked
// for.
#pragma once

#include <AudioUnit/AudioUnit.h>

#include <atomic>
#include <vector>

namespace test {

/// The sample of a frame and channel: noise of 8 bits in amplitude steps, so that every format holds it
/// exactly.
float noise(Float64 frame, UInt32 channel);

/// A value of -1..+1 as bytes of a format.
void putSample(const AudioStreamBasicDescription& format, float value, unsigned char* out);

struct Asked {
    UInt32 bus, frames;
    AudioTimeStamp time;
    AudioUnitRenderActionFlags flags;
    UInt32 buffers, channels, bytes; // of the list, and of its first buffer
};

class Feeder {
public:
    explicit Feeder(const AudioStreamBasicDescription& f, float (*value)(Float64, UInt32) = noise)
        : format(f), valueOf(value)
    {
    }

    static OSStatus callback(void* feeder, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                             UInt32 bus, UInt32 frames, AudioBufferList* list);

    std::vector<Asked> asked; // reserve it where nothing may be allocated
    std::size_t mostAsked = ~std::size_t{0};
    OSStatus status = noErr; // what to answer
    std::atomic<int> calls{0};

private:
    AudioStreamBasicDescription format;
    float (*valueOf)(Float64, UInt32);
};

} // namespace test
