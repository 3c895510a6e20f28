// Whole sounds for tests: made, played by a callback, rendered out of a unit, measured.
#pragma once

#include "tests/platform/audiounit/unit.h"

#include <atomic>
#include <vector>

namespace test {

/// sound[channel][frame].
using Sound = std::vector<std::vector<Float32>>;

Sound silence(UInt32 channels, std::size_t frames);

/// The same value throughout.
Sound steady(UInt32 channels, std::size_t frames, Float32 value);

/// The same tone in every channel, beginning at a zero.
Sound tone(UInt32 channels, std::size_t frames, double hertz, double sampleRate, double amplitude);

/// Any bits at all, not-a-numbers and denormal numbers among them.
Sound anyBits(UInt32 channels, std::size_t frames);

/// Noise between -1 and 1, another in each channel.
Sound whiteNoise(UInt32 channels, std::size_t frames);

/// The amplitude of one frequency in frames [from, until), under a window that hides what is not near it.
double amplitudeAt(const std::vector<Float32>& samples, std::size_t from, std::size_t until, double hertz,
                   double sampleRate);

/// The largest difference between neighbours in frames [from, until).
double largestStep(const std::vector<Float32>& samples, std::size_t from, std::size_t until);

double decibels(double amplitude);

bool sameBits(const std::vector<Float32>& a, const std::vector<Float32>& b);

/// Plays a sound from its frame 0 at sample time 0, and silence behind its end. Allocates nothing.
class Track {
public:
    explicit Track(Sound s) : sound(std::move(s)) {}
    static OSStatus callback(void* track, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                             UInt32 bus, UInt32 frames, AudioBufferList* list);

    Sound sound;
    OSStatus status = noErr;
    bool saysSilence = false;
    std::atomic<int> calls{0};
    UInt32 lastBus = ~UInt32{0};
    AudioUnitRenderActionFlags lastFlags = 0;
};

/// Renders on and on out of a unit's output 0.
class Rendering {
public:
    Rendering(AudioUnit u, const AudioStreamBasicDescription& format, UInt32 mostFrames)
        : unit(u), list(format, mostFrames)
    {
    }
    OSStatus slice(UInt32 frames);

    /// `frames` frames in slices of `sliceFrames`; a slice that fails is a failure of the test.
    Sound play(std::size_t frames, UInt32 sliceFrames);

    AudioUnitRenderActionFlags flags = 0; // what the last slice said
    Float64 at = 0;                       // sample time of the next
    AudioUnit unit;
    List list;
};

} // namespace test
