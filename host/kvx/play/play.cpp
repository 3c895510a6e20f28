#include "host/kvx/play/play.h"

#include "host/kvx/files/atomic_file.h"
#include "host/kvx/files/capture.h"
#include "host/kvx/files/waveform.h"
#include "host/kvx/play/buffered_play.h"
#include "host/kvx/play/classic_play.h"
#include "host/kvx/play/file_info.h"
#include "host/kvx/play/file_play.h"
#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/progress.h"
#include "host/kvx/text/terminal_text.h"
#include "host/kvx/text/time_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace kvx {
namespace {

namespace fs = std::filesystem;

void checkOptions(const PlayerOptions& options, const Playlist& playlist, const KVXDeviceInfo& device)
{
    const int deviceChannels = static_cast<int>(device.outputChannels);
    for (const PlaylistFile& file : filesOf(playlist))
        checkAgainstFile(options, file, channelsToLoad(options, file.format.fileChannels, deviceChannels),
                         deviceChannels);
}

/// The path to which the output of the device is captured; "" if there is no capture.
std::string capturePath(const PlayOptions& options, const KVXDeviceInfo& device)
{
    if (!options.capture.empty()) return options.capture;
    return !options.keep.empty() && device.isSimulated ? options.keep + ".wav" : "";
}

/// Play all groups of files by the requested play method.
/// Returns  whether the device has rendered at least one frame.
bool playGroups(host::Host& host, const Playlist& playlist, const PlayOptions& options,
                const KVXDeviceInfo& device, Progress& progress)
{
    Session session(device, options.device.isStepped, progress);
    switch (options.method) {
    case PlayMethod::file:
        playFiles(host, playlist, options.player, session);
        break;
    case PlayMethod::buffered:
        playBuffered(host, playlist, options.gain, session);
        break;
    case PlayMethod::classic:
        playClassic(host, filesOf(playlist).front(), options.gain, options.labelling, session);
        break;
    }
    return session.meter().frames() > 0;
}

void keepCapture(Capture& capture, const PlayOptions& options, const std::string& path, Progress& progress)
{
    constexpr std::size_t pictureWidth = 1200;
    constexpr int pictureHeight = 300;
    capture.keep();
    progress.say(fmt::format("Captured output: {}", fs::absolute(path).string()));
    if (!options.capture.empty()) return;
    const std::string picture = options.keep + ".png";
    writePicture(drawWaveform(columnsOf(path, pictureWidth), pictureHeight), picture);
    progress.say(fmt::format("Waveform:        {}", fs::absolute(picture).string()));
}

/// Platform objects that are no leaks after playback: the library's class of the sound component never
/// releases its converter.
std::vector<KVXLiveCount> expectedObjects(PlayMethod method)
{
    if (method != PlayMethod::classic) return {};
    return {{"AudioConverter", 1}};
}

} // namespace

// The options and the inputs are checked before the first sound, the cheapest check first: the files, the
// device, the path of the capture, the library.
int play(const PlayOptions& options)
{
    Progress progress(verbosityFor(options.isQuiet, stdout), stdout);
    const Playlist playlist = planPlaylist(options.files, options.isRecursive, progress);
    const KVXDeviceInfo device = chooseDevice(options.device);
    checkOptions(options.player, playlist, device);
    const std::string captureTo = capturePath(options, device);
    refuseToOverwrite(pathsOf(playlist), captureTo, options.capture.empty() ? "--keep" : "--capture");

    // The guard exists before the first temporary file, because it removes that file after a signal.
    InterruptGuard guard;
    std::optional<Capture> capture;
    if (!captureTo.empty()) capture.emplace(device.device, captureTo);
    Library library(options.library);

    warnOfMissingParts(playlist, progress);
    progress.say(formatDevice(device, options.device));
    const bool hasPlayed = playGroups(library.host(), playlist, options, device, progress);
    if (isInterrupted()) progress.leaveLine();
    progress.say(isInterrupted() ? "Stopped." : "Done.");
    if (capture && (hasPlayed || !isInterrupted())) keepCapture(*capture, options, captureTo, progress);
    return reportLeaks(library, progress.exitCode(), expectedObjects(options.method));
}

int showFileInfo(const PlayOptions& options)
{
    useSimulatedDevicesOnly();
    Progress progress(verbosityFor(options.isQuiet, stdout), stdout);
    const Playlist playlist = planPlaylist(options.files, options.isRecursive, progress);
    Library library(options.library);
    warnOfMissingParts(playlist, progress);
    const std::string text = describeFiles(library.host(), filesOf(playlist), options.isJson, progress);
    std::fputs(text.c_str(), stdout);
    return reportLeaks(library, progress.exitCode());
}

} // namespace kvx
