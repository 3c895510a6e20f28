// Messages to the user: plain lines, warnings, and on a terminal one live line, which is overwritten in place
// to show the progress.
// All functions: [main].
#pragma once

#include "host/kvx/terminal/live_line.h"

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

namespace kvx {

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

    /// Print the warning that a file cannot be played, and count the file.
    void warnOfSkipped(const std::string& line);
    std::size_t skippedFiles() const { return skippedFiles_; }

    /// The exit code of the command: interruptExitCode() after a signal, 1 after a warning, 0 in other cases.
    int exitCode() const;

    /// Whether the next live line is due: on a terminal, ten lines per second.
    bool isLineDue() const;

    /// Show the fields of `line` that fit into the terminal as the live line, if a line is due.
    /// Returns  whether `line` was shown.
    bool showLine(const LiveLine& line);

    /// Let the next live line be due without delay.
    void hurry() { last_ = {}; }

    /// Erase the live line from the terminal.
    void wipe();

    /// Leave the live line on the terminal, which may have added "^C" to it, and continue on the next line.
    void leaveLine();

private:
    void flush();

    Verbosity verbosity_;
    std::FILE* out_;
    bool hasWarned_ = false;
    std::size_t skippedFiles_ = 0;
    bool isShown_ = false; // whether a live line is on the screen, with the cursor at its first column
    std::chrono::steady_clock::time_point last_{}; // time of the last shown line
};

} // namespace kvx
