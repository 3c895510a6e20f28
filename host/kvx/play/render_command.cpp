// kvx render: a file through the same units as `kvx play`, on a simulated device that it steps.
#include "host/kvx/files/capture.h"
#include "host/kvx/files/write_aside.h"
#include "host/kvx/play/end_rule.h"
#include "host/kvx/play/file_play.h"
#include "host/kvx/play/play_commands.h"
#include "host/kvx/play/player_options.h"
#include "host/kvx/play/programme.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/progress.h"
#include "host/kvx/text/failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

namespace kvx {
namespace {

struct RenderOptions {
    std::string from, to;
    double deviceRate = 0; // Hz; 0: the file's
    std::optional<double> duration;
    bool isQuiet = false;
    PlayerOptions player;
    LibraryOptions library;
};

constexpr std::uint32_t stepFrames = 8192; // between two looks at the user

constexpr Advice advice = {"see that the file is whole, and that the memory has room for it",
                           "give a rate nearer to the file's with --device-rate, or choose another file"};

// The device that renders, plugged in for as long as this lives.
class RenderDevice {
public:
    RenderDevice(double rate, int channels)
    {
        KVXSimulatedDevice description = {};
        description.name = "Render";
        description.sampleRate = rate;
        description.outputChannels = std::uint32_t(channels);
        description.isStepped = 1;
        device_ = KVXPlatformAddSimulatedDevice(&description);
        if (!device_) throw Failure(KVXPlatformErrorText());
    }
    ~RenderDevice() { KVXPlatformRemoveSimulatedDevice(device_); }
    RenderDevice(const RenderDevice&) = delete;
    RenderDevice& operator=(const RenderDevice&) = delete;

    KVXDeviceInfo info() const
    {
        KVXDeviceInfo wanted = {};
        wanted.device = device_;
        return deviceNow(wanted);
    }

private:
    KVXDeviceID device_;
};

double rateOf(const RenderOptions& options, const ProgrammeFile& file)
{
    return options.deviceRate > 0 ? options.deviceRate : file.format.sampleRate;
}

// Mono stays mono until sides are spoken of; then it is played as two channels, as on any device of two.
int channelsToRender(const RenderOptions& options, const ProgrammeFile& file)
{
    const bool hasSides = options.player.channelMap || options.player.pan.value_or(0) != 0;
    return std::clamp(file.format.fileChannels, hasSides ? 2 : 1, mostChannels);
}

// A channel map says which channels there are; else the sound does.
int deviceChannelsOf(const RenderOptions& options, int channels)
{
    const auto& map = options.player.channelMap;
    return map ? std::clamp(int(map->size()), 1, mostChannels) : channels;
}

// A loop has no end of its own, nor has what is left of the file a length when the user gave another.
std::uint64_t framesWanted(const RenderOptions& options, const FilePlayer& player, std::int64_t loaded,
                           double deviceRate)
{
    const double skipped = player.position() / player.duration(); // of all that is loaded
    const auto left = std::uint64_t(std::llround((1 - skipped) * double(loaded)));
    const std::uint64_t whole = framesRendered(left, player.sampleRate(), player.rate(), deviceRate) +
                                framesOf(player.delay().tail, deviceRate);
    if (!options.duration) return whole;
    const std::uint64_t asked = framesOf(*options.duration, deviceRate);
    return options.player.loop ? asked : std::min(asked, whole);
}

// The class jumps back to IN after the slice that reaches OUT: slices that end at OUT make the jump exact. At
// another rate or pitch the units pull frames ahead of the device, so there the jump keeps its slice
// granularity.
class LoopSlices {
public:
    LoopSlices(const FilePlayer& player, double deviceRate)
    {
        const bool isNeutral = player.rate() == 1 && player.pitch() == 0;
        if (!player.isLooping() || !isNeutral || player.sampleRate() != deviceRate) return;
        length_ = std::max<std::uint64_t>(1, framesOf(player.loopOut() - player.loopIn(), deviceRate));
        left_ = framesOf(player.loopOut() - player.position(), deviceRate);
    }

    /// As many of `frames` as go before the next jump, counted as rendered.
    std::uint32_t take(std::uint32_t frames)
    {
        if (length_ == 0) return frames;
        if (left_ == 0) left_ = length_;
        const auto taken = std::uint32_t(std::min<std::uint64_t>(frames, left_));
        left_ -= taken;
        return taken;
    }

private:
    std::uint64_t length_ = 0; // device frames of the loop; 0: jumps keep their slice granularity
    std::uint64_t left_ = 0;   // until the next jump
};

void stepDevice(const KVXDeviceInfo& device, LoopSlices& slices, std::uint32_t frames)
{
    while (frames > 0) {
        const std::uint32_t step = slices.take(frames);
        if (KVXPlatformStep(device.device, step) != step)
            throw Failure("the device stopped before the end; see that the library is whole");
        frames -= step;
    }
}

// Lengths in a WAV file have 32 bits, and its header needs some of them.
void checkLength(const std::string& path, std::uint64_t frames, int channels)
{
    constexpr std::uint64_t mostBytes = 0xFFFF0000;
    if (frames > mostBytes / (sizeof(float) * std::uint64_t(channels)))
        throw Failure(
            fmt::format("{} would be longer than a WAV file can be; give a shorter --duration", path));
}

// Step the device by `frames` frames. False when the user interrupts.
bool stepToTheEnd(const KVXDeviceInfo& device, LoopSlices slices, std::uint64_t frames, Progress& progress)
{
    const double rate = device.sampleRate;
    for (std::uint64_t done = 0; done < frames;) {
        if (isInterrupted()) return false;
        const auto step = std::uint32_t(std::min<std::uint64_t>(frames - done, stepFrames));
        stepDevice(device, slices, step);
        done += step;
        KVXPlatformDrainMainQueue(0);
        progress.showLine(fmt::format("  {} / {}  {:3.0f} %", printTime(double(done) / rate),
                                      printTime(double(frames) / rate),
                                      100.0 * double(done) / double(frames)));
    }
    return true;
}

void checkSound(const FilePlayer& player)
{
    if (const Status status = player.renderError(); status != 0)
        throw Failure(fmt::format("a part of it could not be rendered: {}", printStatus(status)));
}

// True when the file stands under its name.
bool renderWith(host::Host& host, const RenderOptions& options, const ProgrammeFile& file, Progress& progress)
{
    const CoreAudio core(host);
    const double rate = rateOf(options, file);
    const int channels = channelsToRender(options, file);
    const int deviceChannels = deviceChannelsOf(options, channels);
    checkAgainstFile(options.player, file.path, file.format.duration(), channels, deviceChannels);

    const RenderDevice device(rate, deviceChannels);
    FilePlayer player(host, core, advice);
    const std::int64_t loaded = loadFile(player, file, channels, options.player, progress);
    player.setDevice(device.info().device);
    applyAfterLoad(options.player, player);

    const std::uint64_t frames = framesWanted(options, player, loaded, rate);
    checkLength(options.to, frames, deviceChannels);
    Capture out(device.info().device, options.to);
    player.play();
    const bool isWhole = stepToTheEnd(device.info(), LoopSlices(player, rate), frames, progress);
    progress.wipe();
    player.pause();
    if (!isWhole) return false;
    checkSound(player);
    out.keep();
    progress.say(fmt::format("Rendered {}: {} Hz, {}, {}", options.to, rate, printChannels(deviceChannels),
                             printTime(double(frames) / rate)));
    return true;
}

int render(const RenderOptions& options)
{
    useSimulatedDevicesOnly();
    Progress progress(verbosityFor(options.isQuiet, stdout), stdout);
    const std::vector<Run> runs = planProgramme({options.from});
    const ProgrammeFile file = filesOf(runs).front();
    refuseToOverwrite({file.path}, options.to, "the result");
    InterruptGuard guard; // from here on there may be a file to clear away
    asideOf(options.to);  // to be refused before the work, not behind it

    Library library(options.library);
    warnOfMissingParts(runs, progress);
    if (!renderWith(library.host(), options, file, progress)) {
        progress.leaveLine();
        progress.say("Stopped; nothing was written.");
    }
    return reportLeaks(library, progress.exitCode());
}

void checkRenderOptions(const RenderOptions& options)
{
    checkTogether(options.player);
    if (options.from.empty()) throw CLI::RequiredError("FILE");
    if (options.to.empty()) throw CLI::RequiredError("OUT.wav");
    if (options.player.loop && !options.duration)
        throw CLI::ValidationError("--loop",
                                   "a loop has no end; say with --duration how long OUT.wav is to be");
    if (options.deviceRate != std::floor(options.deviceRate))
        throw CLI::ValidationError("--device-rate", "a WAV file has a whole number of frames a second");
}

} // namespace

void addRenderCommand(CLI::App& app, Action& action)
{
    auto options = std::make_shared<RenderOptions>();
    CLI::App* command =
        app.add_subcommand("render", "Write what `kvx play` would make of a file, as fast as it goes");
    command->add_option("file", options->from, "Any file that libsndfile reads")->type_name("FILE");
    command->add_option("out", options->to, "The result: WAV, 32-bit float, the same bytes each time")
        ->type_name("OUT.wav");
    command->add_option("--device-rate", options->deviceRate, "Sample rate of the result [the file's]")
        ->type_name("HZ")
        ->check(inRange(lowestRate, highestRate));
    command
        ->add_option("--duration", options->duration, "Length of the result, at most; with --loop, exactly")
        ->type_name("SECONDS")
        ->check(inRange(0.001, 1e6));
    command->add_flag("--quiet", options->isQuiet, "Say nothing but errors");
    addPlayerOptions(*command, options->player);
    addLibraryOptions(*command, options->library);
    command->footer(
        "OUT.wav has the file's channels, or with --channel-map those of the map; mono becomes stereo with "
        "--pan. At the file's rate, --rate 1 and --pitch 0 a loop jumps back exactly at OUT; else at the end "
        "of "
        "the slice of 512 frames that reaches OUT.\n\n" +
        command->get_footer());
    command->callback([options, &action] {
        if (options->player.isCurveListWanted) {
            action = showNamedCurves;
            return;
        }
        checkRenderOptions(*options);
        action = [options] { return render(*options); };
    });
}

} // namespace kvx
