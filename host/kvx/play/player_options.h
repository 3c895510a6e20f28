// What the user may set of the file player, on the command line and from there on the object.
#pragma once

#include "host/kvx/play/file_player.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace kvx {

/// Seconds of the file.
struct Loop {
    double in = 0, out = 0;
};

/// Only what the user gave is set; all else stays as the library has it.
struct PlayerOptions {
    std::optional<double> rate, pitch, volume, pan, start;
    std::optional<Loop> loop;
    std::optional<Gains> gains;
    std::optional<std::vector<int>> channelMap;
    RateUnit unit = RateUnit::timePitch;
    bool isInBackground = false;
    bool isCurveListWanted = false; ///< instead of any sound
};

/// Add them to a command. Returns all of them, for a command that has other ways, too.
std::vector<CLI::Option*> addPlayerOptions(CLI::App& command, PlayerOptions& options);

/// Print the curves that --eq knows. Returns the exit code.
int showNamedCurves();

/// What one option alone cannot tell. Throws CLI::ValidationError.
void checkTogether(const PlayerOptions& options);

/// What only the file can tell. `channels` are those that reach the device. Throws Failure with the range.
void checkAgainstFile(const PlayerOptions& options, const std::string& path, double duration, int channels,
                      int deviceChannels);

/// What is to be known to the object before the load, and all that comes after.
void applyBeforeLoad(const PlayerOptions& options, FilePlayer& player);
void applyAfterLoad(const PlayerOptions& options, FilePlayer& player);

} // namespace kvx
