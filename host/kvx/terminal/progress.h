// Messages to the user: plain lines, warnings, and on a terminal one live line, which is overwritten in place
// to show the progress.
// All functions: [main].
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

namespace kvx {

/// Format a peak as a bar of `places` characters, from -60 dB to full scale, and as a number:
/// "[#########-----------]  -33.0 dB".
std::string formatLevel(float peak, int places = 20);

/// Format a live line with the position in a file and the peak of the output:
/// "  0:01.0 / 0:06.5  [####---] …".
std::string formatPosition(double seconds, double totalSeconds, float peak);

/// The state of a file player. All times are in seconds of the file.
struct PlayStatus {
    double position = 0, duration = 0;
    double level = 0; ///< average power of the output in decibels; -120 or less is silence
    bool isPaused = false;
    double rate = 1, pitch = 0, volume = 1; ///< rate and volume as factors, pitch in cents
    double loopIn = 0, loopOut = 0;         ///< loop start and loop end; 0: not set
    bool isLooping = false;
    std::string note; ///< the reason why the last key had no effect; "" if it had an effect
};

/// Format a live line with the state of a file player:
/// "  0:02.4 / 0:06.5  [####------]  -9.3 dB  rate 1.00  loop 0:01.0-0:03.0". A narrow terminal shows
/// only the start of the line, so the most important parts come first.
std::string formatPlayStatus(const PlayStatus& status);

/// The kinds of messages that a command prints.
enum class Verbosity {
    quiet, ///< warnings only
    plain, ///< warnings and plain lines
    live,  ///< warnings, plain lines and the live line
};

/// The verbosity of a command that prints to `out`: live if `out` is a terminal, plain if not, or quiet.
Verbosity verbosityFor(bool isQuiet, std::FILE* out);

/// Prints the lines, the warnings and the live line of one command.
class Progress {
public:
    Progress(Verbosity verbosity, std::FILE* out) : verbosity_(verbosity), out_(out) {}

    /// Print a plain line, unless the verbosity is quiet.
    /// Errors  throws OutputFailure.
    void say(const std::string& line);

    /// Print a warning to standard error: a problem that does not end the command.
    void warn(const std::string& line);

    /// The exit code of the command: interruptExitCode() after a signal, 1 after a warning, 0 in other cases.
    int exitCode() const;

    /// Show `line` as the live line, cut to the width of the terminal, but at most ten lines per second. Each
    /// character of `line` must be one column wide.
    /// Returns  whether `line` was shown.
    bool showLine(const std::string& line);

    /// Let the next call of showLine() show its line without delay.
    void hurry() { last_ = {}; }

    /// Erase the live line from the terminal.
    void wipe();

    /// Leave the live line on the terminal, which may have added "^C" to it, and continue on the next line.
    void leaveLine();

private:
    bool isTooSoon();
    void flush();

    Verbosity verbosity_;
    std::FILE* out_;
    bool hasWarned_ = false;
    bool isShown_ = false; // whether a live line is on the screen, with the cursor at its first column
    std::chrono::steady_clock::time_point last_{}; // time of the last shown line
};

} // namespace kvx
