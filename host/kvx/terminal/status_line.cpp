#include "host/kvx/terminal/status_line.h"

#include "host/kvx/terminal/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kvx {
namespace {

constexpr double silenceDb = -120;

float magnitudeOf(double db) { return db > silenceDb ? float(std::pow(10.0, db / 20.0)) : 0.0f; }

// As wide in a pause, so that nothing behind it moves.
std::string printSound(const PlayStatus& status)
{
    constexpr int places = 10; // with them all but pitch and volume fits in 80 columns
    if (status.isPaused) return "[" + std::string(places, '-') + "]   paused";
    return printLevel(magnitudeOf(status.level), places);
}

std::string printLoop(const PlayStatus& status)
{
    if (status.loopOut > status.loopIn)
        return fmt::format("loop {}-{}{}", printTime(status.loopIn), printTime(status.loopOut),
                           status.isLooping ? "" : " off");
    return status.loopIn > 0 ? fmt::format("loop {}-", printTime(status.loopIn)) : "no loop";
}

} // namespace

std::string printPlayStatus(const PlayStatus& status)
{
    std::string line = fmt::format("  {} / {}  {}", printTime(std::min(status.position, status.duration)),
                                   printTime(status.duration), printSound(status));
    if (!status.note.empty()) line += "  " + status.note;
    line += fmt::format("  rate {:.2f}  {}", status.rate, printLoop(status));
    if (std::lround(status.pitch) != 0) line += fmt::format("  pitch {:+.0f}", status.pitch);
    if (std::lround(status.volume * 100) != 100)
        line += fmt::format("  volume {:.0f} %", status.volume * 100);
    return line;
}

} // namespace kvx
