// Messages to the user: plain lines, warnings, and on a terminal one live line that shows the progress.
// All functions: [main].
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

namespace kvx {

/// A time in seconds as text, "0:07.3" or "1:02:03.0". Tenths are cut off, not rounded.
std::string formatTime(double seconds);

/// A peak as a bar of `places` characters from -60 dB to full scale, and as a number:
/// "[#########-----------]  -33.0 dB".
std::string formatLevel(float peak, int places = 20);

/// A live line that shows the position in a file and the peak of the output: "  0:01.0 / 0:06.5  [####---]
/// …".
std::string formatPosition(double seconds, double totalSeconds, float peak);

/// The state of a file player. Times in seconds of the file.
struct PlayStatus {
    double position = 0, duration = 0;
    double level = 0; ///< average power in decibels; -120 or less is silence
    bool isPaused = false;
    double rate = 1, pitch = 0, volume = 1; ///< rate and volume as factors, pitch in cents
    double loopIn = 0, loopOut = 0;         ///< loop points; both are 0 without a loop
    bool isLooping = false;
    std::string note; ///< the reason why the last key had no effect; may be empty
};

/// A live line that shows the state of a file player:
/// "  0:02.4 / 0:06.5  [####------]  -9.3 dB  rate 1.00  loop 0:01.0-0:03.0". Narrow terminals cut off the
/// end, so the most important parts come first.
std::string formatPlayStatus(const PlayStatus& status);

enum class Verbosity {
    quiet, ///< warnings without lines
    plain, ///< lines and warnings without a live line
    live,  ///< lines and warnings with a live line
};

/// The verbosity for the stream `out`: live if `out` is a terminal.
Verbosity verbosityFor(bool isQuiet, std::FILE* out);

/// Prints the lines, the warnings and the live line of one command.
class Progress {
public:
    Progress(Verbosity verbosity, std::FILE* out) : verbosity_(verbosity), out_(out) {}

    /// Print a line, unless quiet.
    /// Errors  throws OutputFailure.
    void say(const std::string& line);

    /// Print a problem that does not end the command to standard error, even if quiet.
    void warn(const std::string& line);

    /// The exit code of the command: interruptExitCode() after a signal, 1 after a warning, otherwise 0.
    int exitCode() const;

    /// Show the live line, at most ten times per second, and cut the line to the width of the terminal. Each
    /// character of `line` must be one column wide.
    /// Returns  whether the line was shown.
    bool showLine(const std::string& line);

    /// Show the next live line without delay.
    void hurry() { last_ = {}; }

    /// Erase the live line.
    void wipe();

    /// Keep the live line, to which a terminal has added "^C", and continue on the next line.
    void leaveLine();

private:
    bool isTooSoon();
    void flush();

    Verbosity verbosity_;
    std::FILE* out_;
    bool hasWarned_ = false;
    bool isShown_ = false; // whether a live line is on the screen, with the cursor at its first column
    std::chrono::steady_clock::time_point last_{};
};

} // namespace kvx
