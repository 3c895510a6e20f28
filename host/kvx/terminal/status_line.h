// The line that stands while a file plays.
#pragma once

#include <string>

namespace kvx {

/// What the line tells. Seconds of the file, decibels, factors, cents.
struct PlayStatus {
    double position = 0, duration = 0;
    double level = 0; ///< average power; at or below -120 is silence
    bool isPaused = false;
    double rate = 1, pitch = 0, volume = 1;
    double loopIn = 0, loopOut = 0; ///< no points set: both 0
    bool isLooping = false;
    std::string note; ///< what a key led to; may be empty
};

/// "  0:02.4 / 0:06.5  [####------]  -9.3 dB  rate 1.00  loop 0:01.0-0:03.0"; a pause, a note, a pitch and a
/// volume are added where there are any. What matters most comes first, since narrow terminals cut the rest.
std::string printPlayStatus(const PlayStatus& status);

} // namespace kvx
