// Time and level while a file plays: one line that is written over on a terminal, plain lines elsewhere.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

namespace kvx {

/// "0:07.3", "1:02:03.0"; tenths are cut, not rounded.
std::string printTime(double seconds);

/// A bar from -60 dB to full scale, and the level in figures: "[#########-----------]  -33.0 dB".
std::string printLevel(float peak, int places = 20);

enum class Verbosity { quiet, plain, live };

/// What fits standard output: live on a terminal.
Verbosity verbosityFor(bool isQuiet, std::FILE* out);

/// [main]
class Progress {
public:
    Progress(Verbosity verbosity, std::FILE* out) : verbosity_(verbosity), out_(out) {}

    /// A line of its own; nothing when quiet. Throws OutputFailure.
    void say(const std::string& line);

    /// Report on standard error, even when quiet, a flaw that does not end the command; exitCode() is then 1.
    void warn(const std::string& line);

    /// For the command's end: after a signal as interruptExitCode(), after a warning 1, else 0.
    int exitCode() const;

    /// Where a file stands. Shown live only, ten times a second at most.
    void show(double seconds, double totalSeconds, float peak);

    /// A line of characters one column wide each, cut where the terminal ends as it is now. Likewise; whether
    /// it was shown.
    bool showLine(const std::string& line);

    /// Have the next line shown at once.
    void hurry() { last_ = {}; }

    /// Take the live line away.
    void wipe();

    /// Go on below the live line, over which a terminal has written "^C".
    void leaveLine();

private:
    bool isTooSoon();
    void flush();

    Verbosity verbosity_;
    std::FILE* out_;
    bool hasWarned_ = false;
    bool isShown_ = false; // a live line stands, with the cursor at its begin
    std::chrono::steady_clock::time_point last_{};
};

} // namespace kvx
