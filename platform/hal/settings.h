// The settings of a device, and the limits of a simulated device's settings.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::hal {

constexpr double lowestRate = 1000, highestRate = 768000; // in Hz
constexpr UInt32 mostChannels = 64;
constexpr UInt32 smallestSlice = 1, largestSlice = 8192; // in frames

/// Settings of a device. Rate in Hz; slice (length of one I/O cycle) and latency in frames.
struct Settings {
    double rate = 44100;
    UInt32 outputChannels = 2;
    UInt32 inputChannels = 0;
    UInt32 sliceFrames = 512;
    UInt32 latencyFrames = 0;
};

} // namespace kvxplatform::hal
