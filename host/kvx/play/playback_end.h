// End-of-playback detection, and the length of what a file renders, in device frames.
// All functions: [main].
#pragma once

#include <cstdint>

namespace kvx {

/// The number of device frames that `fileFrames` frames of a file render to, rounded to the nearest. Rates in
/// Hz; `rate` is the factor that the file player applies.
std::uint64_t framesRendered(std::uint64_t fileFrames, double fileRate, double rate, double deviceRate);

/// A time in device frames, rounded up. A time computed from a whole number of frames yields that number.
std::uint64_t framesOf(double seconds, double deviceRate);

/// Detects when the device has played the last sound of a file. The caller polls it.
class EndDetector {
public:
    /// The player has not reached the last frame of the file, or loops, or is paused.
    void reset() { isEndSeen_ = false; }

    /// The player has reached the last frame of the file. `frames` is the number of frames that the device
    /// has rendered so far, `remaining` the number of frames that it must render after the first such call.
    /// Returns  whether playback has ended.
    bool hasEnded(std::uint64_t frames, std::uint64_t remaining);

private:
    std::uint64_t endSeenAt_ = 0;
    bool isEndSeen_ = false;
};

} // namespace kvx
