#include "host/kvx/terminal/live_line.h"

#include "host/kvx/text/time_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kvx {
namespace {

// The ranks of the fields. A setting that differs from its default precedes a default.
enum Rank {
    positionRank,
    noteRank,
    durationRank,
    levelRank,
    volumeRank,
    pitchRank,
    changedRank,
    defaultRank
};

/// Format the level. The width is the same during a pause, so that the rest of the live line does not move.
std::string formatSound(const PlayStatus& status)
{
    return status.isPaused ? "[----------]   paused" : formatLevel(status.peak);
}

/// The fields that precede the settings.
LiveLine formatPosition(const PlayStatus& status)
{
    LiveLine line = {{"  " + formatTime(std::min(status.position, status.duration)), positionRank},
                     {" / " + formatTime(status.duration), durationRank},
                     {"  " + formatSound(status), levelRank}};
    if (!status.note.empty()) line.push_back({"  " + status.note, noteRank});
    return line;
}

void addVolume(LiveLine& line, double volume)
{
    const auto percent = std::lround(volume * 100);
    if (percent == 100) return;
    line.push_back({percent == 0 ? "  muted" : fmt::format("  volume {} %", percent), volumeRank});
}

LineField formatLoop(const FilePlaySettings& settings)
{
    if (settings.loopOut > settings.loopIn)
        return {fmt::format("  loop {}-{}{}", formatTime(settings.loopIn), formatTime(settings.loopOut),
                            settings.isLooping ? "" : " off"),
                changedRank};
    if (settings.loopIn > 0) return {fmt::format("  loop {}-", formatTime(settings.loopIn)), changedRank};
    return {"  no loop", defaultRank};
}

} // namespace

std::string fitLine(const LiveLine& line, std::size_t width)
{
    std::vector<std::size_t> byRank(line.size());
    std::iota(byRank.begin(), byRank.end(), std::size_t{0});
    std::stable_sort(byRank.begin(), byRank.end(),
                     [&line](std::size_t a, std::size_t b) { return line[a].rank < line[b].rank; });
    std::vector<bool> fits(line.size());
    std::size_t used = 0;
    for (const std::size_t each : byRank) {
        const std::size_t columns = line[each].text.size();
        fits[each] = line[each].rank == 0 || used + columns <= width;
        if (fits[each]) used += columns;
    }
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i)
        if (fits[i]) text += line[i].text;
    return text.substr(0, width);
}

std::string formatLevel(float peak)
{
    constexpr double floorDb = -60.0;
    constexpr int places = 10; // short enough that a live line without pitch and volume fits in 80 columns
    if (!(peak > 0.0f)) return fmt::format("[{}]   silent", std::string(places, '-'));
    const double db = 20.0 * std::log10(double{peak});
    const auto lit = static_cast<std::size_t>(
        std::clamp(std::ceil((db - floorDb) / -floorDb * places), 0.0, static_cast<double>(places)));
    return fmt::format("[{}{}] {:5.1f} dB", std::string(lit, '#'), std::string(places - lit, '-'),
                       std::clamp(db, -99.9, 999.9));
}

LiveLine formatShareDone(double seconds, double totalSeconds)
{
    return {{"  " + formatTime(seconds), 1},
            {" / " + formatTime(totalSeconds), 2},
            {fmt::format("  {:3.0f} %", 100.0 * seconds / totalSeconds), 0}};
}

LiveLine formatPlayStatus(const PlayStatus& status)
{
    LiveLine line = formatPosition(status);
    addVolume(line, status.volume);
    return line;
}

LiveLine formatPlayStatus(const PlayStatus& status, const FilePlaySettings& settings)
{
    LiveLine line = formatPosition(status);
    line.push_back({fmt::format("  rate {:.2f}", settings.rate),
                    std::lround(settings.rate * 100) == 100 ? defaultRank : changedRank});
    line.push_back(formatLoop(settings));
    if (std::lround(settings.pitch) != 0)
        line.push_back({fmt::format("  pitch {:+.0f}", settings.pitch), pitchRank});
    addVolume(line, status.volume);
    return line;
}

} // namespace kvx
