// The commands that play and render sound files, and the options of these commands.
// All functions: [main].
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/files/result.h"
#include "host/kvx/library/library.h"
#include "host/kvx/play/player_options.h"
#include "host/soundclient/sample_bytes.h"

#include <optional>
#include <string>
#include <vector>

namespace kvx {

/// The play methods: the file player, the buffered player, or the library's sound component, which `kvx
/// soundstream` opens as a classic sound program does.
enum class PlayMethod { file, buffered, classic };

struct PlayOptions {
    PlayMethod method = PlayMethod::file;
    std::vector<std::string> files; ///< paths of files, folders and playlist files: at least one, and exactly
                                    ///< one file for `classic`
    bool isEndless = false;         ///< whether the first file follows the last one
    bool isRecursive = false;       ///< whether to search the folders in a folder
    DeviceRequest device;
    std::string capture;  ///< path of --capture: the WAV file for the output of the device; empty: none
    std::string keep;     ///< value NAME of --keep: capture the simulated device in NAME.wav, and draw the
                          ///< waveform and spectrogram in NAME.png; empty: no files
    PlayerOptions player; ///< options that only the method `file` uses, and duration
    float gain = 1;       ///< gain factor that the methods `buffered` and `classic` use
    soundclient::Labelling labelling =
        soundclient::Labelling::bigAsLittle; ///< byte order and label that the method `classic` uses
    bool isJson = false;                     ///< whether showFileInfo() prints JSON
    bool isQuiet = false;
    LibraryOptions library;
};

/// Play the files to the output device. A file that cannot be played is reported and left out.
/// Returns  the exit code.
/// Errors   throws Failure, also if no file can be played.
int play(const PlayOptions& options);

/// Print container, codec, tags, format and duration of each file, the format as the library reports it.
/// Returns  the exit code.
/// Errors   throws Failure.
int showFileInfo(const PlayOptions& options);

struct RenderOptions {
    std::string from; ///< path of the file that is read
    ResultOptions result;
    double deviceRate = 0; ///< sample rate of the result in Hz; 0: as rateOfResult() chooses it
    bool isQuiet = false;
    PlayerOptions player; ///< with a loop, player.duration is the exact duration of the result
    LibraryOptions library;
};

/// Render a sound file into a file or a stream, with the audio units that the play method `file` also uses.
/// Returns  the exit code.
/// Errors   throws Failure.
int render(const RenderOptions& options);

} // namespace kvx
