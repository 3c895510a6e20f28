// The play method of the file player: one object per file, keys while a file plays, and the next file loaded
// in advance.
#pragma once

#include "host/kvx/play/player_options.h"
#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/kvx/terminal/keyboard.h"
#include "host/runtime/host.h"

#include <string>

namespace kvx {

constexpr double seekStep = 5;      // seconds
constexpr double volumeStep = 0.05; // factor
constexpr double rateStep = 0.05;   // factor
constexpr double pitchStep = 100;   // cents, one semitone

/// Add `step` to `value` and clamp the result to the range. A result close to a multiple of the step is
/// rounded to the multiple.
double stepped(double value, double step, const Range& range);

/// Apply a key to a player. The session handles Key::quit, which has no effect here.
/// Returns  the reason why the key had no effect, for the user; "" otherwise.
std::string applyKey(Key key, FilePlayer& player);

/// Copy volume, rate and pitch to `to`, a player with the same rate unit.
void copySettings(const FilePlayer& from, FilePlayer& to);

/// Play all files until the end, or until the user quits or interrupts.
/// Errors  throws Failure.
void playFiles(host::Host& host, const Playlist& playlist, const PlayerOptions& options, Session& session);

} // namespace kvx
