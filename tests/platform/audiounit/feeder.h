// A render callback that writes known samples in any PCM format and records the requests it receives.
#pragma once

#include <AudioUnit/AudioUnit.h>

#include <atomic>
#include <vector>

namespace test {

/// Returns  the sample of a frame and channel: noise in steps of 8 bits, which every format represents
///          exactly.
float noise(Float64 frame, UInt32 channel);

/// Encode a value of -1..+1 in a format, independently of the platform's own encoder.
void putSample(const AudioStreamBasicDescription& format, float value, unsigned char* out);

struct Request {
    UInt32 bus, frames;
    AudioTimeStamp time;
    AudioUnitRenderActionFlags flags;
    /// The number of buffers in the list, and the channel count and byte size of the first buffer.
    UInt32 buffers, channels, bytes;
};

class Feeder {
public:
    explicit Feeder(const AudioStreamBasicDescription& f, float (*value)(Float64, UInt32) = noise)
        : format(f), valueOf(value)
    {
    }

    static OSStatus callback(void* feeder, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                             UInt32 bus, UInt32 frames, AudioBufferList* list);

    std::vector<Request> requests;
    /// The largest number of requests to record; 0 where the callback must not allocate.
    std::size_t mostRequests = ~std::size_t{0};
    OSStatus status = noErr; ///< status that the callback returns
    std::atomic<int> calls{0};

private:
    AudioStreamBasicDescription format;
    float (*valueOf)(Float64, UInt32);
};

} // namespace test
