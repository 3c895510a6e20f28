// How loud one channel is: its average power and its peak.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <array>
#include <cmath>

namespace kvxplatform::audiounit {

/// Units    average power is the mean square of the last 100 ms, what came before the first frame counting as
///          silence; a peak is the largest magnitude, held for a second and then falling by 20 dB a second.
///          Samples that are not finite count as silence in the average; a peak stops at 1e6.
///
/// Thread   [audio & in a slice]. Allocates nothing.
class LevelMeter {
public:
    LevelMeter() = default;
    explicit LevelMeter(Float64 sampleRate);

    void reset();
    void measure(const Float32* samples, UInt32 frames);
    void measureSilence(UInt32 frames);

    Float32 averagePower() const;
    Float32 peak() const { return static_cast<Float32>(std::fmax(heldPeak, runningPeak)); }

private:
    // The last 100 ms are added up in about a hundred stretches of equal length, and one that is still open.
    static constexpr UInt32 stretchesInWindow = 100;

    void closeStretch();

    double windowFrames = 1;
    UInt32 stretchFrames = 1;
    double holdFrames = 0;
    double fall = 1; // of a peak, in a stretch

    std::array<double, 2 * stretchesInWindow> energies{}; // of closed stretches, in a ring
    UInt32 next = 0;                                      // place in the ring
    double runningEnergy = 0, runningPeak = 0;            // of the open one
    UInt32 runningFrames = 0;
    double heldPeak = 0, heldFrames = 0; // and for how long
};

} // namespace kvxplatform::audiounit
