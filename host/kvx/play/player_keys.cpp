#include "host/kvx/play/player_keys.h"

#include <algorithm>
#include <cmath>

namespace kvx {
namespace {

bool hasLoop(const FilePlayer& player) { return player.loopOut() > player.loopIn(); }

// An empty loop would repeat one position.
void endEmptyLoop(FilePlayer& player)
{
    if (player.isLooping() && !hasLoop(player)) player.setLooping(false);
}

void setLoopOutHere(FilePlayer& player)
{
    const double here = player.position();
    // Without a loop start, the loop begins at the start of the file. The class loops only after an explicit
    // write of 0. That write also moves an unset loop end, so it comes first.
    if (player.loopIn() == 0) player.setLoopIn(0);
    player.setLoopOut(here);
}

std::string toggleLoop(FilePlayer& player)
{
    if (!player.isLooping() && !hasLoop(player)) return "mark a loop with [ and ] first";
    player.setLooping(!player.isLooping());
    return {};
}

void togglePause(FilePlayer& player) { player.isPlaying() ? player.pause() : player.play(); }

} // namespace

double stepped(double value, double step, const Range& range)
{
    const double moved = value + step;
    const double onGrid = std::round(moved / step) * step;
    return std::clamp(std::fabs(moved - onGrid) < std::fabs(step) * 1e-3 ? onGrid : moved, range.low,
                      range.high);
}

std::string applyKey(Key key, FilePlayer& player)
{
    switch (key) {
    case Key::pause:
        togglePause(player);
        break;
    case Key::back:
        player.seek(player.position() - seekStep);
        break;
    case Key::forward:
        player.seek(player.position() + seekStep);
        break;
    case Key::louder:
        player.setVolume(stepped(player.volume(), volumeStep, volumeRange));
        break;
    case Key::softer:
        player.setVolume(stepped(player.volume(), -volumeStep, volumeRange));
        break;
    case Key::loopIn:
        player.setLoopIn(player.position());
        endEmptyLoop(player);
        break;
    case Key::loopOut:
        setLoopOutHere(player);
        endEmptyLoop(player);
        break;
    case Key::loop:
        return toggleLoop(player);
    case Key::faster:
        player.setRate(stepped(player.rate(), rateStep, player.rates()));
        break;
    case Key::slower:
        player.setRate(stepped(player.rate(), -rateStep, player.rates()));
        break;
    case Key::higher:
        player.setPitch(stepped(player.pitch(), pitchStep, pitchRange));
        break;
    case Key::lower:
        player.setPitch(stepped(player.pitch(), -pitchStep, pitchRange));
        break;
    case Key::quit:
        break;
    }
    return {};
}

void copySettings(const FilePlayer& from, FilePlayer& to)
{
    to.setVolume(from.volume());
    to.setRate(from.rate());
    to.setPitch(from.pitch()); // with varispeed this repeats the value more exactly than setRate()
}

} // namespace kvx
