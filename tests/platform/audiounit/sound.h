// Test tools for whole sounds: making them, playing them in a callback, rendering them from a unit, measuring
// them.
#pragma once

#include "tests/platform/audiounit/unit.h"

#include <atomic>
#include <vector>

namespace test {

/// sound[channel][frame].
using Sound = std::vector<std::vector<Float32>>;

Sound silence(UInt32 channels, std::size_t frames);

/// Returns  a sound with the same value in every sample.
Sound steady(UInt32 channels, std::size_t frames, Float32 value);

/// Returns  the same tone in every channel, beginning at a zero crossing.
Sound tone(UInt32 channels, std::size_t frames, double hertz, double sampleRate, double amplitude);

/// Returns  samples of random bits, which include not-a-numbers and subnormal numbers.
Sound anyBits(UInt32 channels, std::size_t frames);

/// Returns  noise between -1 and 1, different in each channel.
Sound whiteNoise(UInt32 channels, std::size_t frames);

/// Returns  the amplitude of one frequency in frames [from, until), measured under a window that suppresses
///          distant frequencies.
double amplitudeAt(const std::vector<Float32>& samples, std::size_t from, std::size_t until, double hertz,
                   double sampleRate);

/// Returns  the largest difference between neighbouring samples in frames [from, until).
double largestStep(const std::vector<Float32>& samples, std::size_t from, std::size_t until);

double decibels(double amplitude);

bool sameBits(const std::vector<Float32>& a, const std::vector<Float32>& b);

/// Plays a sound, with its frame 0 at sample time 0 and silence after its end. Allocates nothing.
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

/// Renders successive slices of a unit's output 0.
class Rendering {
public:
    Rendering(AudioUnit u, const AudioStreamBasicDescription& format, UInt32 mostFrames)
        : unit(u), list(format, mostFrames)
    {
    }
    OSStatus slice(UInt32 frames);

    /// Render `frames` frames in slices of `sliceFrames` frames. A slice that fails makes the test fail.
    Sound play(std::size_t frames, UInt32 sliceFrames);

    AudioUnitRenderActionFlags flags = 0; // flags that the last slice returned
    Float64 at = 0;                       // sample time of the next slice
    AudioUnit unit;
    List list;
};

} // namespace test
