// The live line of a command that plays: its parts as fields, and the line in the width of a terminal.
// All functions: [main].
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kvx {

/// A part of a live line, with the blanks that separate it from the part before. Each character is one column
/// wide.
struct LineField {
    std::string text;
    int rank; ///< order in which the fields take the width of the line: 0 is first
};
using LiveLine = std::vector<LineField>;

/// Join the fields that fit into `width` columns. A field of rank 0 is not left out, but the line is cut.
std::string fitLine(const LiveLine& line, std::size_t width);

/// Format a peak as a bar, from -60 dB to full scale, and as a number: "[#####-----]  -33.0 dB".
std::string formatLevel(float peak);

/// Format how much of a sound is done, in seconds: "  0:02.4 / 0:06.5   37 %".
LiveLine formatShareDone(double seconds, double totalSeconds);

/// The state of a player. All times are in seconds of the file.
struct PlayStatus {
    double position = 0, duration = 0;
    float peak = 0; ///< highest magnitude of the device's output since the last live line; full scale is 1
    bool isPaused = false;
    double volume = 1;  ///< factor
    std::string note{}; ///< the reason why the last key had no effect; "" if it had an effect
};

/// The settings that only the file player has.
struct FilePlaySettings {
    double rate = 1, pitch = 0;     ///< rate as a factor, pitch in cents
    double loopIn = 0, loopOut = 0; ///< loop start and loop end, in seconds of the file; 0: not set
    bool isLooping = false;
};

/// Format the state of a player: "  0:02.4 / 0:06.5  [#########-]  -9.3 dB  volume 50 %".
LiveLine formatPlayStatus(const PlayStatus& status);

/// Format the state of a file player:
/// "  0:02.4 / 0:06.5  [#########-]  -9.3 dB  rate 1.00  loop 0:01.0-0:03.0  volume 50 %".
LiveLine formatPlayStatus(const PlayStatus& status, const FilePlaySettings& settings);

} // namespace kvx
