#include "host/kvx/status_line.h"

#include "host/kvx/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kvx {
namespace {

constexpr double silenceDb = -120;

float magnitudeOf(double db) { return db > silenceDb ? float(std::pow(10.0, db / 20.0)) : 0.0f; }

std::string printLoop(const PlayStatus& status)
{
    if (!(status.loopOut > 0)) return "no loop";
    return fmt::format("loop {}-{}{}", printTime(status.loopIn), printTime(status.loopOut),
                       status.isLooping ? "" : " off");
}

} // namespace

std::string printPlayStatus(const PlayStatus& status)
{
    std::string line = fmt::format(
        "  {} / {}  {}  rate {:.2f}  {}", printTime(std::min(status.position, status.duration)),
        printTime(status.duration), printLevel(status.isPaused ? 0.0f : magnitudeOf(status.level)),
        status.rate, printLoop(status));
    if (std::lround(status.pitch) != 0) line += fmt::format("  pitch {:+.0f}", status.pitch);
    if (std::lround(status.volume * 100) != 100)
        line += fmt::format("  volume {:.0f} %", status.volume * 100);
    if (status.isPaused) line += "  paused";
    if (!status.note.empty()) line += "  " + status.note;
    return line;
}

} // namespace kvx
