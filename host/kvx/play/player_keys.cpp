#include "host/kvx/play/player_keys.h"

#include <algorithm>
#include <cmath>

namespace kvx {
namespace {

bool hasLoop(const FilePlayer& player) { return player.loopOut() > player.loopIn(); }

// Points that enclose nothing would hold the sound at one place.
void endEmptyLoop(FilePlayer& player)
{
    if (player.isLooping() && !hasLoop(player)) player.setLooping(false);
}

void setLoopOutHere(FilePlayer& player)
{
    const double here = player.position();
    // Without a begin of its own the loop begins where the file does. The class takes that for a point only
    // when it is written, and moves an end that is not set along with it.
    if (player.loopIn() == 0) player.setLoopIn(0);
    player.setLoopOut(here);
}

KeyEffect toggleLoop(FilePlayer& player)
{
    if (!player.isLooping() && !hasLoop(player)) return {false, "mark a loop with [ and ] first"};
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

KeyEffect applyKey(Key key, FilePlayer& player)
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
        return {true, {}};
    }
    return {};
}

void carrySettings(const FilePlayer& from, FilePlayer& to)
{
    to.setVolume(from.volume());
    to.setRate(from.rate());
    to.setPitch(from.pitch()); // with varispeed the same value again, finer than hundredths
}

} // namespace kvx
