#include "host/kvx/files/atomic_file.h"
#include "host/kvx/files/result.h"
#include "host/kvx/files/sound_list.h"
#include "host/kvx/files/streams.h"
#include "host/kvx/play/play.h"
#include "host/kvx/play/session.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/time_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kvx {
namespace {

constexpr std::uint32_t stepFrames = 8192; // device frames between two checks for a signal of the user
// Slice size of a rendering device, in frames. Longer slices cost less per frame; the latency does not
// matter.
constexpr std::uint32_t longSlice = 1024;

constexpr Advice advice = {checkFileAndMemory,
                           "give a rate nearer to the file's with --device-rate, or choose another file"};

/// Adds a stepped device, which runs only when this command steps it. The device exists as long as the
/// object.
class RenderDevice {
public:
    /// With `sliceFrames` 0 the device has the default slice size of simulated devices.
    RenderDevice(double rate, int channels, std::uint32_t sliceFrames)
    {
        KVXSimulatedDevice description = {};
        description.name = "Render";
        description.sampleRate = rate;
        description.outputChannels = static_cast<std::uint32_t>(channels);
        description.sliceFrames = sliceFrames;
        description.isStepped = 1;
        device_ = KVXPlatformAddSimulatedDevice(&description);
        if (!device_) throw Failure(KVXPlatformErrorText());
    }
    ~RenderDevice() { KVXPlatformRemoveSimulatedDevice(device_); }
    RenderDevice(const RenderDevice&) = delete;
    RenderDevice& operator=(const RenderDevice&) = delete;

    KVXDeviceInfo info() const
    {
        KVXDeviceInfo device = {};
        device.device = device_;
        return deviceNow(device);
    }

private:
    KVXDeviceID device_;
};

/// Collects the output of a device, from its construction on. The device must outlive the object.
class RenderedFrames {
public:
    RenderedFrames(const KVXDeviceInfo& device, Result& result) : device_(device), result_(result)
    {
        samples_.reserve(std::size_t{stepFrames} * device.outputChannels);
        checkControl(KVXPlatformSetOutputTap(device.device, append, this));
    }
    ~RenderedFrames() { KVXPlatformSetOutputTap(device_.device, nullptr, nullptr); }
    RenderedFrames(const RenderedFrames&) = delete;
    RenderedFrames& operator=(const RenderedFrames&) = delete;

    /// Write the collected frames, at most stepFrames, to the result.
    void write()
    {
        result_.write(samples_.data(), samples_.size() / device_.outputChannels);
        samples_.clear();
    }

private:
    /// The output tap, which may not allocate.
    static void append(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels)
    {
        std::vector<float>& collected = static_cast<RenderedFrames*>(context)->samples_;
        const std::size_t count = std::size_t{frames} * channels;
        if (collected.size() + count <= collected.capacity())
            collected.insert(collected.end(), samples, samples + count);
    }

    const KVXDeviceInfo device_;
    Result& result_;
    std::vector<float> samples_;
};

int rateOf(const RenderOptions& options, const PlaylistFile& file)
{
    return options.deviceRate > 0 ? static_cast<int>(options.deviceRate)
                                  : rateOfResult(options.result.format, file.format.sampleRate);
}

/// The number of channels to render. A mono file becomes stereo if --channel-map is given or --pan is not 0.
int channelsToRender(const RenderOptions& options, const PlaylistFile& file)
{
    const bool hasSides = options.player.channelMap || options.player.pan.value_or(0) != 0;
    return std::clamp(file.format.fileChannels, hasSides ? 2 : 1, mostChannels);
}

/// The number of channels of the device: one per entry of --channel-map; without --channel-map, `channels`.
int deviceChannelsOf(const RenderOptions& options, int channels)
{
    const auto& map = options.player.channelMap;
    return map ? std::clamp(static_cast<int>(map->size()), 1, mostChannels) : channels;
}

/// The number of device frames to render: exactly --duration if there is a loop; otherwise the rest of the
/// file and the tail, but at most --duration. `loaded` is the number of frames that the player has loaded.
std::uint64_t framesToRender(const RenderOptions& options, const FilePlayer& player, std::int64_t loaded,
                             double deviceRate)
{
    // Fraction of the file before the start position.
    const double skipped = player.position() / player.duration();
    const auto left = static_cast<std::uint64_t>(std::llround((1 - skipped) * static_cast<double>(loaded)));
    const std::uint64_t whole = framesRendered(left, player.sampleRate(), player.rate(), deviceRate) +
                                framesOf(player.delay().tail, deviceRate);
    if (!options.player.duration) return whole;
    const std::uint64_t requested = framesOf(*options.player.duration, deviceRate);
    return options.player.loop ? requested : std::min(requested, whole);
}

/// Divides the frames of the device into slices so that one slice ends exactly at the loop end, because the
/// class jumps to the loop start only after a slice. If rate, pitch or device rate differ from those of the
/// file, nothing is divided, because the units then read frames ahead of the device.
class LoopSlices {
public:
    LoopSlices(const FilePlayer& player, double deviceRate)
    {
        const bool isNeutral = player.rate() == 1 && player.pitch() == 0;
        if (!player.isLooping() || !isNeutral || player.sampleRate() != deviceRate) return;
        length_ = std::max<std::uint64_t>(1, framesOf(player.loopOut() - player.loopIn(), deviceRate));
        left_ = framesOf(player.loopOut() - player.position(), deviceRate);
    }

    /// Count up to `frames` frames as rendered, but none after the next jump to the loop start.
    /// Returns  the number of counted frames.
    std::uint32_t take(std::uint32_t frames)
    {
        if (length_ == 0) return frames;
        if (left_ == 0) left_ = length_;
        const auto taken = static_cast<std::uint32_t>(std::min<std::uint64_t>(frames, left_));
        left_ -= taken;
        return taken;
    }

private:
    std::uint64_t length_ = 0; // loop length in device frames; 0: slices are not divided
    std::uint64_t left_ = 0;   // device frames until the next jump to the loop start
};

void stepDevice(const KVXDeviceInfo& device, LoopSlices& slices, std::uint32_t frames)
{
    while (frames > 0) {
        const std::uint32_t step = slices.take(frames);
        if (KVXPlatformStep(device.device, step) != step)
            throw Failure("the device stopped before the end; install the library again");
        frames -= step;
    }
}

/// Run the device for `frames` frames.
/// Returns  false if a signal of the user has ended the run.
bool runDevice(const KVXDeviceInfo& device, LoopSlices slices, std::uint64_t frames, RenderedFrames& rendered,
               Progress& progress)
{
    const double rate = device.sampleRate;
    for (std::uint64_t done = 0; done < frames;) {
        if (isInterrupted()) return false;
        const auto step = static_cast<std::uint32_t>(std::min<std::uint64_t>(frames - done, stepFrames));
        stepDevice(device, slices, step);
        rendered.write();
        done += step;
        KVXPlatformDrainMainQueue(0);
        progress.showLine(
            formatShareDone(static_cast<double>(done) / rate, static_cast<double>(frames) / rate));
    }
    return true;
}

void checkRenderError(const FilePlayer& player, const std::string& path)
{
    if (const Status status = player.renderError(); status != 0)
        throw Failure(fmt::format("{}: a part could not be rendered: {}; choose another file", path,
                                  formatStatus(status)));
}

/// The text for the result in messages.
std::string nameOf(const ResultOptions& result)
{
    return result.path == standardStream ? "standard output" : result.path;
}

/// Finish the result, whose duration is `seconds`.
/// Returns  false if a signal of the user has ended the command.
bool finish(Result& out, double seconds, Progress& progress)
{
    const bool isWhole = out.finish([&](double part) {
        LiveLine line = formatShareDone(part * seconds, seconds);
        line.push_back({"  writing the normalized result", 3});
        progress.showLine(line);
        return !isInterrupted();
    });
    if (isWhole) progress.wipe();
    return isWhole;
}

/// Format the last line: the result and its format.
std::string formatResult(const ResultOptions& result, int rate, int channels, std::uint64_t frames)
{
    return fmt::format("Rendered {}: {}, {} Hz, {}, {}", nameOf(result), formatName(result.format), rate,
                       formatChannels(channels), formatTime(static_cast<double>(frames) / rate));
}

/// Render the file.
/// Returns  false if a signal of the user has ended the rendering; then no file is written.
bool renderFile(host::Host& host, const RenderOptions& options, const PlaylistFile& file, Progress& progress)
{
    const CoreAudio core(host);
    const ResultOptions& result = options.result;
    const int rate = rateOf(options, file);
    const int channels = channelsToRender(options, file);
    const int deviceChannels = deviceChannelsOf(options, channels);
    checkAgainstFile(options.player, file, channels, deviceChannels);
    checkFormat(result.format, nameOf(result), rate, deviceChannels);
    Result out(result, rate, deviceChannels, isInterrupted);

    // A loop jumps at the end of a slice, so it keeps the usual slices.
    const RenderDevice device(rate, deviceChannels, options.player.loop ? 0 : longSlice);
    FilePlayer player(host, core, advice);
    const std::int64_t loaded = loadFile(player, file, channels, options.player, progress);
    player.setDevice(device.info().device);
    applyOptions(options.player, player);

    const std::uint64_t frames = framesToRender(options, player, loaded, rate);
    checkLength(result.format, result.path, frames, deviceChannels);
    RenderedFrames rendered(device.info(), out);
    player.play();
    const bool isWhole = runDevice(device.info(), LoopSlices(player, rate), frames, rendered, progress);
    player.pause();
    if (!isWhole) return false;
    progress.wipe();
    checkRenderError(player, file.path);
    if (!finish(out, static_cast<double>(frames) / rate, progress)) return false;
    progress.say(formatResult(result, rate, deviceChannels, frames));
    if (const std::string note = out.levelNote(options.player.volume.value_or(1)); !note.empty())
        progress.say("  " + note);
    return true;
}

/// As renderFile(). A signal that ends the wait for the reader of a stream is no error.
bool renderUntilSignal(host::Host& host, const RenderOptions& options, const PlaylistFile& file,
                       Progress& progress)
{
    try {
        return renderFile(host, options, file, progress);
    } catch (const Failure&) {
        if (!isInterrupted() || !isOutputStream(options.result.path)) throw;
        return false;
    }
}

void refusePlaylist(const std::string& path)
{
    if (isPlaylistFile(path))
        throw Failure(fmt::format(
            "{} is a playlist, and render takes one sound file; name a file of the playlist", path));
}

} // namespace

int render(const RenderOptions& options)
{
    useSimulatedDevicesOnly();
    const std::string& to = options.result.path;
    // If the sound goes to standard output, messages go to standard error.
    std::FILE* const messages = isStandardOutput(to) ? stderr : stdout;
    Progress progress(verbosityFor(options.isQuiet, messages), messages);
    // The guard exists before the first temporary file, because it removes that file after a signal.
    const InterruptGuard guard;
    SpooledInputs inputs(isInterrupted);
    const std::optional<std::string> from = inputs.pathFor(options.from);
    if (!from) return progress.exitCode();
    refusePlaylist(*from);
    const Playlist playlist = planPlaylist({*from});
    const PlaylistFile file = filesOf(playlist).front();
    refuseToOverwrite({file.path}, to, "the result");
    if (!isOutputStream(to))
        temporaryPathFor(to); // fails before the library is loaded if no file can be written

    Library library(options.library);
    warnOfMissingParts(playlist, progress);
    if (!renderUntilSignal(library.host(), options, file, progress)) {
        progress.leaveLine();
        progress.say(isOutputStream(to) ? "Stopped; the result is cut short."
                                        : "Stopped; nothing was written.");
    }
    return reportLeaks(library, progress.exitCode());
}

} // namespace kvx
