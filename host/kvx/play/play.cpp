#include "host/kvx/play/play.h"

#include "host/kvx/files/atomic_file.h"
#include "host/kvx/files/capture.h"
#include "host/kvx/files/streams.h"
#include "host/kvx/picture/picture_command.h"
#include "host/kvx/play/buffered_play.h"
#include "host/kvx/play/classic_play.h"
#include "host/kvx/play/file_info.h"
#include "host/kvx/play/file_play.h"
#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/progress.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
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

/// Cut the files of a group off at the longest duration. The first file starts at the frame `start`.
FormatGroup limited(FormatGroup group, std::int64_t start, const std::optional<double>& duration)
{
    if (!duration) return group;
    const auto longest = static_cast<std::int64_t>(framesOf(*duration, group.sampleRate()));
    for (PlaylistFile& file : group.files) {
        file.format.frames = std::min(file.format.frames, start + longest);
        start = 0;
    }
    return group;
}

/// Play a file through the buffered player: with --buffered, also the next files of the same format; without,
/// because the file is too long for the memory.
/// Returns  the number of the file that plays next; nullopt if playback has ended.
std::optional<std::size_t> playBufferedFrom(host::Host& host, const std::vector<PlaylistFile>& files,
                                            std::size_t first, const PlayOrder& order,
                                            const PlayOptions& options, Session& session)
{
    const std::optional<double>& duration = options.player.duration;
    if (options.method == PlayMethod::buffered)
        return playBuffered(host, limited(groupFrom(files, first), 0, duration), first, 0, order,
                            options.gain, session);
    const PlaylistFile& file = files[first];
    session.progress().say(fmt::format("{} needs {:.1f} GiB, too much for the memory, so it plays from the "
                                       "disk, without rate, pitch and loops.",
                                       file.path,
                                       loadedBytes(options.player, file, session.device()) / (1 << 30)));
    const auto start = std::llround(options.player.start.value_or(0) * file.format.sampleRate);
    return playBuffered(host, limited({{file}}, start, duration), first, start, order, 1, session);
}

/// Play the files by the method `file` or `buffered`.
void playList(host::Host& host, const std::vector<PlaylistFile>& files, const PlayOptions& options,
              Session& session)
{
    PlayOrder order(files.size(), options.isEndless);
    session.volume().value = options.player.volume.value_or(1);
    session.enableKeys();
    for (std::optional<std::size_t> next = 0; next;) {
        const bool isBuffered = options.method == PlayMethod::buffered ||
                                isForBufferedPlayer(options.player, files[*next], session.device());
        next = isBuffered ? playBufferedFrom(host, files, *next, order, options, session)
                          : playFiles(host, files, *next, order, options.player, session);
    }
}

/// Format a line about an output above full scale, and the option that avoids it.
/// Returns  "" if the output stayed within full scale, which includes 0.05 dB above it.
std::string formatOverload(const PlayOptions& options, Session& session)
{
    const double peak = session.meter().highestPeak(), decibels = 20 * std::log10(peak);
    const double volume = session.volume().value;
    if (!std::isfinite(decibels) || decibels < 0.05 || volume == 0) return {};
    const std::string advice =
        options.method == PlayMethod::file
            ? fmt::format("--volume {}", volumeAtFullScale(volume, peak))
            : fmt::format("--gain {:.1f}", std::floor(200 * std::log10(options.gain * volume / peak)) / 10);
    return fmt::format("The output was up to {:+.1f} dB above full scale; `{}` avoids clipping.", decibels,
                       advice);
}

/// Play all files by the requested play method.
/// Returns  whether the device has rendered at least one frame.
bool playAll(host::Host& host, const Playlist& playlist, const PlayOptions& options,
             const KVXDeviceInfo& device, Progress& progress)
{
    Session session(device, options.device.isStepped, progress);
    const std::vector<PlaylistFile> files = filesOf(playlist);
    if (options.method == PlayMethod::classic)
        playClassic(host, files.front(), options.gain, options.labelling, session);
    else
        playList(host, files, options, session);
    if (const std::string note = formatOverload(options, session); !note.empty() && !isInterrupted())
        progress.say(note);
    return session.meter().frames() > 0;
}

void keepCapture(Capture& capture, const PlayOptions& options, const std::string& path, Progress& progress)
{
    capture.keep();
    progress.say(fmt::format("Captured output: {}", fs::absolute(path).string()));
    if (!options.capture.empty()) return;
    const std::string picture = options.keep + ".png";
    if (writeSoundPicture(path, picture, {}, progress))
        progress.say(fmt::format("Picture:         {}", fs::absolute(picture).string()));
}

/// Format the last line of playback. `fileCount` is the number of requested files.
std::string formatEnd(std::size_t fileCount, const Progress& progress)
{
    if (isInterrupted()) return "Stopped.";
    const std::size_t skipped = progress.skippedFiles();
    return skipped == 0 ? "Done."
                        : fmt::format("Done; {} of {} files could not be played.", skipped, fileCount);
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
    // The guard exists before the first temporary file, because it removes that file after a signal.
    const InterruptGuard guard;
    SpooledInputs inputs(isInterrupted);
    const Playlist playlist = planPlaylist(options.files, options.isRecursive, inputs, progress);
    if (isInterrupted()) return progress.exitCode();
    const std::size_t fileCount = filesOf(playlist).size() + progress.skippedFiles();
    const KVXDeviceInfo device = chooseDevice(options.device);
    checkOptions(options.player, playlist, device);
    const std::string captureTo = capturePath(options, device);
    refuseToOverwrite(pathsOf(playlist), captureTo, options.capture.empty() ? "--keep" : "--capture");

    std::optional<Capture> capture;
    if (!captureTo.empty()) capture.emplace(device.device, captureTo);
    Library library(options.library);

    warnOfMissingParts(playlist, progress);
    progress.say(formatDevice(device, options.device));
    const bool hasPlayed = playAll(library.host(), playlist, options, device, progress);
    if (isInterrupted()) progress.leaveLine();
    progress.say(formatEnd(fileCount, progress));
    if (capture && (hasPlayed || !isInterrupted())) keepCapture(*capture, options, captureTo, progress);
    return reportLeaks(library, progress.exitCode(), expectedObjects(options.method));
}

int showFileInfo(const PlayOptions& options)
{
    useSimulatedDevicesOnly();
    Progress progress(verbosityFor(options.isQuiet, stdout), stdout);
    const InterruptGuard guard;
    SpooledInputs inputs(isInterrupted);
    const Playlist playlist = planPlaylist(options.files, options.isRecursive, inputs, progress);
    if (isInterrupted()) return progress.exitCode();
    Library library(options.library);
    warnOfMissingParts(playlist, progress);
    const std::string text = describeFiles(library.host(), filesOf(playlist), options.isJson, progress);
    std::fputs(text.c_str(), stdout);
    return reportLeaks(library, progress.exitCode());
}

} // namespace kvx
