// The options of the file player: read from text, checked, and applied to a player.
// All functions: [main].
#pragma once

#include "host/kvx/play/file_player.h"
#include "host/kvx/play/playlist.h"
#include "host/kvx/terminal/progress.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kvx {

/// Loop points, in seconds of the file.
struct Loop {
    double in = 0, out = 0;
};

/// The options that the user has set. The library's default applies to an option without a value.
struct PlayerOptions {
    std::optional<double> rate, pitch, volume, pan, start;
    std::optional<Loop> loop;
    std::optional<Gains> gains;
    std::optional<std::vector<int>> channelMap;
    RateUnit unit = RateUnit::timePitch;
    bool isInBackground = false;    ///< whether to load on a background thread
    bool isCurveListWanted = false; ///< whether to print the named curves instead of playing
};

/// Read "IN:OUT".
/// Errors  throws WrongUsage.
Loop readLoop(const std::string& text);

/// Read channel numbers separated by commas.
/// Errors  throws WrongUsage.
std::vector<int> readChannelMap(const std::string& text);

/// Check the options that depend on each other.
/// Errors  throws WrongUsage.
void checkCombination(const PlayerOptions& options);

/// Check the options that depend on the file and the device. `channels` is the number of channels to load.
/// Errors  throws Failure with the accepted values.
void checkAgainstFile(const PlayerOptions& options, const PlaylistFile& file, int channels,
                      int deviceChannels);

/// The number of channels to load: at most the channels of the file and of the device. Mono becomes stereo on
/// a device with two channels or more, because the player would use the first channel of the device only.
int channelsToLoad(int fileChannels, int deviceChannels);

/// Load a file, and apply the options that precede the load. If `whileLoading` is set, the load uses a
/// background thread, and the calling thread runs `whileLoading` repeatedly.
/// Returns  the number of loaded frames, as framesLoaded().
/// Errors   throws Failure.
std::int64_t loadFile(FilePlayer& player, const PlaylistFile& file, int channels,
                      const PlayerOptions& options, Progress& progress,
                      const std::function<void()>& whileLoading = {});

/// The number of frames that the player has loaded. Prints a warning if the file is damaged.
/// Errors  throws Failure.
std::int64_t framesLoaded(FilePlayer& player, const PlaylistFile& file, Progress& progress);

/// Apply the options that follow the load.
void applyOptions(const PlayerOptions& options, FilePlayer& player);

} // namespace kvx
