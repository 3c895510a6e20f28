// The level of one channel: its average power and its peak hold.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <array>
#include <cmath>

namespace kvxplatform::audiounit {

/// Measures one channel.
/// Units    the average power is the mean square of the last 100 ms; frames before the first one count as
///          silence. The peak is the largest magnitude, which is held for a second and then falls by 20 dB a
///          second. Samples that are not finite count as silence in the average; a peak is at most 1e6.
/// All functions allocate nothing.
/// [audio & rendering]
class LevelMeter {
public:
    LevelMeter() = default;
    explicit LevelMeter(Float64 sampleRate);

    void reset();
    void measure(const Float32* samples, UInt32 frames);
    void measureSilence(UInt32 frames);

    Float32 averagePower() const;
    Float32 peak() const { return static_cast<Float32>(std::fmax(heldPeak_, segmentPeak_)); }

private:
    // The window of the average consists of about a hundred closed segments of equal length and the segment
    // in progress.
    static constexpr UInt32 segmentsInWindow = 100;

    void closeSegment();

    double windowFrames_ = 1;
    UInt32 segmentFrames_ = 1;
    double holdFrames_ = 0;
    double segmentDecay_ = 1; ///< factor by which a peak falls during a segment

    std::array<double, 2 * segmentsInWindow> energies_{}; ///< ring buffer of the energies of closed segments
    UInt32 next_ = 0; ///< index in the ring buffer where the next energy is stored

    // The energy, peak and length of the segment in progress.
    double segmentEnergy_ = 0, segmentPeak_ = 0;
    UInt32 framesInSegment_ = 0;

    double heldPeak_ = 0, framesHeld_ = 0;
};

} // namespace kvxplatform::audiounit
