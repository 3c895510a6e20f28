// The commands that play and render sound files, and their options.
// All functions: [main].
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/library/library.h"
#include "host/kvx/play/player_options.h"
#include "host/soundclient/sample_bytes.h"

#include <optional>
#include <string>
#include <vector>

namespace kvx {

/// The part of the library that plays.
enum class PlayMethod { filePlayer, bufferedPlayer, soundComponent };

struct PlayOptions {
    PlayMethod method = PlayMethod::filePlayer;
    std::vector<std::string> files; ///< at least one file; exactly one with soundComponent
    DeviceRequest device;
    std::string capture; ///< path of the capture; empty: no capture
    std::string keep; ///< path without suffix of a capture of the simulated device and its picture, or empty
    PlayerOptions player; ///< used by filePlayer
    float gain = 1;       ///< factor, used by bufferedPlayer and soundComponent
    soundclient::Labelling labelling = soundclient::Labelling::bigAsLittle; ///< used by soundComponent
    bool isQuiet = false;
    LibraryOptions library;
};

/// Play the files.
/// Returns  the exit code.
/// Errors   throws Failure.
int play(const PlayOptions& options);

/// Print the format and the duration of each file, as the library reports them.
/// Returns  the exit code.
/// Errors   throws Failure.
int showFileInfo(const PlayOptions& options);

struct RenderOptions {
    std::string from, to;
    double deviceRate = 0;          ///< Hz; 0: the rate of the file
    std::optional<double> duration; ///< seconds
    bool isQuiet = false;
    PlayerOptions player;
    LibraryOptions library;
};

/// Render a file into a WAV file, through the same units as play().
/// Returns  the exit code.
/// Errors   throws Failure.
int render(const RenderOptions& options);

} // namespace kvx
