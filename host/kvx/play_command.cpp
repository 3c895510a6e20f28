// kvx play. Everything that can be refused is looked at before the first sound: the files, the device, the
// place of the capture, the library - in this order, the cheapest first.
#include "host/kvx/capture.h"
#include "host/kvx/commands.h"
#include "host/kvx/failure.h"
#include "host/kvx/interrupt.h"
#include "host/kvx/library.h"
#include "host/kvx/meter.h"
#include "host/kvx/output_device.h"
#include "host/kvx/picture.h"
#include "host/kvx/playback.h"
#include "host/kvx/programme.h"
#include "host/kvx/progress.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>

namespace kvx {
namespace {

namespace fs = std::filesystem;

struct PlayOptions {
    std::vector<std::string> files;
    DeviceWish device;
    std::string capture;
    std::string keep;
    std::string otherwise;
    double gainDb = 0;
    bool isQuiet = false;
    LibraryOptions library;
};

constexpr double pollSeconds = 0.02;
constexpr std::uint32_t stepFrames = 4096; // of a stepped device, between two looks at the queue
constexpr std::size_t pictureWidth = 1200;
constexpr int pictureHeight = 300;

std::string printChannels(const SoundFormat& format)
{
    return format.fileChannels == 1   ? "mono"
           : format.fileChannels == 2 ? "stereo"
                                      : fmt::format("{} channels", format.fileChannels);
}

void announce(Progress& progress, const ProgrammeFile& file)
{
    const SoundFormat& format = file.format;
    progress.say(fmt::format("Playing {}: {} Hz, {}, {}", fs::path(file.path).filename().string(),
                             format.sampleRate, printChannels(format),
                             printTime(double(format.frames) / format.sampleRate)));
    if (format.fileChannels > format.channels)
        progress.say(fmt::format("  Of its {} channels the first two are heard.", format.fileChannels));
}

void refuseToOverwrite(const std::vector<std::string>& files, const std::string& capture)
{
    std::error_code ignored;
    for (const std::string& file : files)
        if (fs::equivalent(file, capture, ignored))
            throw Failure(fmt::format(
                "{} is being played and cannot be written at the same time; name another file for "
                "--capture",
                capture));
}

// Let time pass: the stepped device is turned by hand, any other turns itself.
void passTime(const PlayOptions& options, const KVXDeviceInfo& device)
{
    if (options.device.isStepped) KVXPlatformStep(device.device, stepFrames);
    KVXPlatformDrainMainQueue(options.device.isStepped ? 0.0 : pollSeconds);
}

// Play one run to its end. True if any of it was heard. Throws Failure when the device goes away.
bool playRun(host::Host& host, const Run& run, const PlayOptions& options, const KVXDeviceInfo& device,
             Progress& progress)
{
    const auto gain = float(std::pow(10.0, options.gainDb / 20.0)); // exactly 1 at 0 dB
    Playback playback(host, run, gain);
    Meter meter(device.device);
    playback.begin(device);

    const ProgrammeFile* heard = nullptr;
    while (!isInterrupted() && playback.turn()) {
        const double position = playback.position();
        const ProgrammeFile& file = run.fileAt(std::int64_t(position));
        if (&file != heard) announce(progress, file);
        heard = &file;
        progress.show((position - double(run.firstFrameOf(file))) / run.sampleRate(),
                      double(file.format.frames) / run.sampleRate(), meter.takePeak());
        passTime(options, device);
        if (!deviceNow(device).isAlive) {
            playback.stop();
            throw Failure(
                fmt::format("{} went away while playing; choose another device with --device", device.name));
        }
    }
    const bool isHeard = playback.position() > 0;
    playback.stop();
    if (playback.hadGap())
        fmt::print(stderr, "kvx: the sound had gaps: the file could not be read as fast as it plays\n");
    return isHeard;
}

// Where the capture goes: as asked, or beside the picture when only the simulated device is there to hear it.
std::string capturePath(const PlayOptions& options, const KVXDeviceInfo& device)
{
    if (!options.capture.empty()) return options.capture;
    return !options.keep.empty() && device.isSimulated ? options.keep + ".wav" : "";
}

void keepCapture(Capture& capture, const PlayOptions& options, const std::string& path, Progress& progress)
{
    capture.keep();
    progress.say(fmt::format("What would have been heard: {}", fs::absolute(path).string()));
    if (!options.capture.empty()) return;
    const std::string picture = options.keep + ".png";
    writePicture(drawWaveform(columnsOf(path, pictureWidth), pictureHeight), picture);
    progress.say(fmt::format("Its waveform:               {}", fs::absolute(picture).string()));
}

int play(const PlayOptions& options)
{
    Progress progress(verbosityFor(options.isQuiet, stdout), stdout);
    const std::vector<Run> runs = planProgramme(options.files);
    const KVXDeviceInfo device = chooseDevice(options.device);
    const std::string captureTo = capturePath(options, device);
    refuseToOverwrite(options.files, captureTo);

    InterruptGuard guard; // from here on there may be a file to clear away
    std::optional<Capture> capture;
    if (!captureTo.empty()) capture.emplace(device.device, captureTo);
    Library library(options.library);

    if (isForWantOfHardware(device, options.device))
        progress.say("No sound hardware opens here, so this plays to the simulated device" +
                     std::string(options.device.isStepped ? "." : ", in real time."));
    else
        progress.say(fmt::format("Device: {}, {} Hz", device.name, device.sampleRate));

    bool isHeard = false;
    for (const Run& run : runs)
        if (!isInterrupted() && playRun(library.host(), run, options, device, progress)) isHeard = true;
    if (isInterrupted()) progress.leaveLine();
    progress.say(isInterrupted() ? "Stopped." : "Done.");
    if (capture && (isHeard || !isInterrupted())) keepCapture(*capture, options, captureTo, progress);
    return closeLibrary(library, interruptExitCode());
}

} // namespace

void addPlayCommand(CLI::App& app, Action& action)
{
    auto options = std::make_shared<PlayOptions>();
    CLI::App* command = app.add_subcommand("play", "Play sound files, one after the other");
    command->add_option("files", options->files, "Any files that libsndfile reads")->type_name("FILE");
    command
        ->add_option("--device", options->device.choice, "Name, part of a name, or number of `kvx devices`")
        ->type_name("DEVICE");
    command->add_option("--device-rate", options->device.rate, "Sample rate of the simulated device")
        ->type_name("HZ")
        ->check(inRange(1000.0, 768000.0));
    command->add_flag("--fast", options->device.isStepped,
                      "Do not wait for what nobody hears: turn the simulated device as fast as it goes");
    command->add_option("--capture", options->capture, "Keep what the device plays, in 32-bit float")
        ->type_name("OUT.wav");
    command
        ->add_option(
            "--keep", options->keep,
            "On the simulated device, and without --capture: keep what would be heard in NAME.wav, and its "
            "picture in NAME.png")
        ->type_name("NAME");
    command->add_option("--gain", options->gainDb, "Louder or softer; 0 leaves every sample as it is")
        ->type_name("DB")
        ->check(inRange(-120.0, 40.0));
    command->add_option("--otherwise", options->otherwise, "What to play when no file is named")
        ->type_name("FILE");
    command->add_flag("--quiet", options->isQuiet, "Say nothing but errors");
    addLibraryOptions(*command, options->library);
    command->callback([options, &action] {
        if (options->files.empty() && !options->otherwise.empty()) options->files = {options->otherwise};
        if (options->files.empty()) throw CLI::RequiredError("FILE");
        action = [options] { return play(*options); };
    });
}

} // namespace kvx
