// What keys do to a file player.
#pragma once

#include "host/kvx/play/file_player.h"
#include "host/kvx/terminal/key.h"

#include <string>

namespace kvx {

constexpr double seekStep = 5;      // seconds
constexpr double volumeStep = 0.05; // of full
constexpr double rateStep = 0.05;
constexpr double pitchStep = 100; // cents, a semitone

/// `value` and a step, on the grid of steps if it is near it, kept in the range.
double stepped(double value, double step, const Range& range);

/// What a key led to.
struct KeyEffect {
    bool isQuit = false;
    std::string note; ///< why nothing happened; empty otherwise
};

/// Do what a key asks for. [main]
KeyEffect applyKey(Key key, FilePlayer& player);

/// Give `to` the volume, rate and pitch of `from`, a player with the same rate unit. [main]
void carrySettings(const FilePlayer& from, FilePlayer& to);

} // namespace kvx
