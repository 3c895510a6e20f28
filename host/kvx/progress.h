// Time and level while a file plays: one line that is written over on a terminal, plain lines elsewhere.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

namespace kvx {

/// "0:07.3", "1:02:03.0"; tenths are cut, not rounded.
std::string printTime(double seconds);

/// A bar of 20 places from -60 dB to full scale, and the level in figures: "[#########-----------]  -33.0
/// dB".
std::string printLevel(float peak);

enum class Verbosity { quiet, plain, live };

/// What fits standard output: live on a terminal.
Verbosity verbosityFor(bool isQuiet, std::FILE* out);

/// [main]
class Progress {
public:
    Progress(Verbosity verbosity, std::FILE* out) : verbosity_(verbosity), out_(out) {}

    /// A line of its own; nothing when quiet. Throws OutputFailure.
    void say(const std::string& line);

    /// Where a file stands. Shown live only, ten times a second at most.
    void show(double seconds, double totalSeconds, float peak);

    /// Go on below the live line, behind which a terminal has written "^C".
    void leaveLine();

private:
    void wipe();
    void flush();

    Verbosity verbosity_;
    std::FILE* out_;
    std::size_t shown_ = 0; // columns of the live line
    std::chrono::steady_clock::time_point last_{};
};

} // namespace kvx
