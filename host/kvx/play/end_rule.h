// When a file has been played to its end, and how long what came of it is.
#pragma once

#include <cstdint>

namespace kvx {

/// Delay between a file player's position and what is audible, summed over its units. Seconds.
struct Delay {
    double latency = 0; ///< from the position to what the units render
    double tail = 0;    ///< decay after the last frame of the file has been rendered
    double device = 0;  ///< the device's latency
};

/// Frames that come of `fileFrames` of a file, at `fileRate` Hz, played at `rate` into a device at
/// `deviceRate`: to the nearest.
std::uint64_t framesRendered(std::uint64_t fileFrames, double fileRate, double rate, double deviceRate);

/// A time in whole frames of a device; one that is begun counts.
std::uint64_t framesOf(double seconds, double deviceRate);

/// A rate as the class keeps it: hundredths, in single precision. The hundredth that it stands
/// for; others as they are.
double asGiven(double rate);

/// Told now and then how far a player is, it says when all of the file has been heard.
class EndRule {
public:
    /// The last frame has not gone in, or no longer: the player was moved back, or loops.
    void notAtEnd() { isEndSeen_ = false; }

    /// The last frame has gone in. `frames`: what the device has rendered so far; `framesBehindEnd`: what
    /// must be rendered from here on, until nothing is held back any more.
    bool hasEnded(std::uint64_t frames, std::uint64_t framesBehindEnd);

private:
    std::uint64_t endSeenAt_ = 0;
    bool isEndSeen_ = false;
};

} // namespace kvx
