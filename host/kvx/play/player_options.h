// The options of the file player: functions that read the options from text, check them and apply them.
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

/// The options that the user has set. For an option without a value, the library's default applies.
struct PlayerOptions {
    std::optional<double> rate, pitch, volume, pan, start;
    std::optional<double> duration; ///< longest duration of the output of a file, in seconds
    std::optional<Loop> loop;
    std::optional<Gains> gains;
    std::optional<std::vector<int>> channelMap;
    RateUnit unit = RateUnit::timePitch;
    bool isInBackground = false;    ///< whether to load the file on a background thread
    bool isCurveListWanted = false; ///< whether to list the named equaliser curves instead of playing
};

/// Read the loop points from the text "IN:OUT", in plain seconds, or "IN-OUT", in the forms of readTime().
/// Errors  throws WrongUsage, which names both forms.
Loop readLoop(const std::string& text);

/// Read a channel map: channel numbers separated by commas.
/// Errors  throws WrongUsage.
std::vector<int> readChannelMap(const std::string& text);

/// Check the options that depend on each other.
/// Errors  throws WrongUsage.
void checkCombination(const PlayerOptions& options);

/// Check the options that depend on the file or on the device. `channels` is the number of channels of the
/// file that will be loaded.
/// Errors  throws Failure, which names the accepted values.
void checkAgainstFile(const PlayerOptions& options, const PlaylistFile& file, int channels,
                      int deviceChannels);

/// The number of channels in which the player loads a file: at most that of the file and that of the device.
/// A mono file becomes stereo on any other than a mono device, because the player would use one channel only.
int channelsToLoad(int fileChannels, int deviceChannels);

/// The same with options: a channel map may name each channel of the file, so all of them are loaded.
int channelsToLoad(const PlayerOptions& options, int fileChannels, int deviceChannels);

/// Load a file, and apply the options that precede the load. If `whileLoading` is set, the load uses a
/// background thread, and the calling thread runs `whileLoading` repeatedly until the load ends.
/// Returns  the number of loaded frames, as framesLoaded() counts them.
/// Errors   throws Failure.
std::int64_t loadFile(FilePlayer& player, const PlaylistFile& file, int channels,
                      const PlayerOptions& options, Progress& progress,
                      const std::function<void()>& whileLoading = {});

/// Count the frames that the player has loaded. If the file is damaged, also print a warning.
/// Errors  throws Failure.
std::int64_t framesLoaded(FilePlayer& player, const PlaylistFile& file, Progress& progress);

/// Apply the options that require a loaded file.
void applyOptions(const PlayerOptions& options, FilePlayer& player);

} // namespace kvx
