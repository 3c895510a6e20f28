// The play method `file`: one file player per file. The user controls the player with keys, and the next file
// is loaded while a file plays.
// All functions: [main].
#pragma once

#include "host/kvx/play/player_options.h"
#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/kvx/terminal/keyboard.h"
#include "host/runtime/host.h"

#include <string>

namespace kvx {

constexpr double seekStep = 5;      // change of the position by a key, seconds
constexpr double volumeStep = 0.05; // change of the volume by a key, a factor
constexpr double rateStep = 0.05;   // change of the rate by a key, a factor
constexpr double pitchStep = 100;   // change of the pitch by a key, cents

/// Add `step` to `value` and clamp the result to the range. A result close to a multiple of the step is
/// rounded to the multiple.
double stepped(double value, double step, const Range& range);

/// Apply a key to a player. Key::quit has no effect, because the session handles it.
/// Returns  for the user, the reason why the key had no effect; "" if the key had an effect.
std::string applyKey(Key key, FilePlayer& player);

/// Copy volume, rate and pitch from one player to another player, which has the same rate unit.
void copySettings(const FilePlayer& from, FilePlayer& to);

/// Play all files until the end, or until a key or a signal of the user ends playback.
/// Errors  throws Failure.
void playFiles(host::Host& host, const Playlist& playlist, const PlayerOptions& options, Session& session);

} // namespace kvx
