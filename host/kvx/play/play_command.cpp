// kvx play. Everything that can be refused is looked at before the first sound: the files, the device, the
// place of the capture, the library - in this order, the cheapest first.
#include "host/kvx/files/capture.h"
#include "host/kvx/files/picture.h"
#include "host/kvx/files/write_aside.h"
#include "host/kvx/play/buffered_play.h"
#include "host/kvx/play/file_info.h"
#include "host/kvx/play/file_play.h"
#include "host/kvx/play/play_commands.h"
#include "host/kvx/play/player_options.h"
#include "host/kvx/play/programme.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/key.h"
#include "host/kvx/terminal/progress.h"
#include "host/kvx/text/failure.h"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

namespace kvx {
namespace {

namespace fs = std::filesystem;

struct PlayOptions {
    std::vector<std::string> files;
    DeviceRequest device;
    std::string capture;
    std::string keep;
    std::string otherwise;
    double gainDb = 0;
    bool isQuiet = false;
    bool isBuffered = false;
    bool isInfoWanted = false;
    PlayerOptions player;
    LibraryOptions library;
};

constexpr std::size_t pictureWidth = 1200;
constexpr int pictureHeight = 300;

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

int showInfo(const PlayOptions& options)
{
    useSimulatedDevicesOnly();
    Progress progress(verbosityFor(options.isQuiet, stdout), stdout);
    const std::vector<Run> runs = planProgramme(options.files);
    Library library(options.library);
    warnOfMissingParts(runs, progress);
    for (const ProgrammeFile& file : filesOf(runs))
        std::fputs(printFileInfo(library.host(), file, progress).c_str(), stdout);
    return reportLeaks(library, progress.exitCode());
}

int play(const PlayOptions& options)
{
    Progress progress(verbosityFor(options.isQuiet, stdout), stdout);
    const std::vector<Run> runs = planProgramme(options.files);
    const KVXDeviceInfo device = chooseDevice(options.device);
    if (!options.isBuffered) checkFiles(filesOf(runs), options.player, device);
    const std::string captureTo = capturePath(options, device);
    refuseToOverwrite(pathsOf(runs), captureTo, options.capture.empty() ? "--keep" : "--capture");

    InterruptGuard guard; // from here on there may be a file to clear away
    std::optional<Capture> capture;
    if (!captureTo.empty()) capture.emplace(device.device, captureTo);
    Library library(options.library);

    warnOfMissingParts(runs, progress);
    progress.say(printDevice(device, options.device));
    const bool isStepped = options.device.isStepped;
    const bool isHeard =
        options.isBuffered
            ? playBuffered(library.host(), runs, options.gainDb, device, isStepped, progress)
            : playFiles(library.host(), filesOf(runs), options.player, device, isStepped, progress);
    if (isInterrupted()) progress.leaveLine();
    progress.say(isInterrupted() ? "Stopped." : "Done.");
    if (capture && (isHeard || !isInterrupted())) keepCapture(*capture, options, captureTo, progress);
    return reportLeaks(library, progress.exitCode());
}

} // namespace

void addPlayCommand(CLI::App& app, Action& action)
{
    auto options = std::make_shared<PlayOptions>();
    CLI::App* command = app.add_subcommand("play", "Play sound files, one after the other");
    command->add_option("files", options->files, "Any files that libsndfile reads")->type_name("FILE");
    addDeviceOptions(*command, options->device);
    command->add_option("--capture", options->capture, "Keep what the device plays, in 32-bit float")
        ->type_name("OUT.wav");
    command
        ->add_option(
            "--keep", options->keep,
            "On the simulated device, and without --capture: keep what would be heard in NAME.wav, and its "
            "picture in NAME.png")
        ->type_name("NAME");
    command->add_flag(
        "--info", options->isInfoWanted,
        "Do not play: print each file's formats, rate, channels and duration as the library gives them");
    CLI::Option* buffered = command->add_flag(
        "--buffered", options->isBuffered,
        "Decode from the disk while playing, through the class of the buffered player: for files longer than "
        "the memory, and without gaps between them");
    command
        ->add_option("--gain", options->gainDb,
                     "With --buffered: louder or softer; 0 leaves every sample as it is")
        ->type_name("DB")
        ->check(inRange(-120.0, 40.0))
        ->needs(buffered);
    for (CLI::Option* option : addPlayerOptions(*command, options->player)) option->excludes(buffered);
    command->add_option("--otherwise", options->otherwise, "What to play when no file is named")
        ->type_name("FILE");
    command->add_flag("--quiet", options->isQuiet, "Say nothing but errors");
    addLibraryOptions(*command, options->library);
    command->footer(fmt::format("{} (on a terminal, without --buffered and --fast).\n\n"
                                "A loop jumps back at the end of the device's slice that reaches OUT; `kvx "
                                "render` can be exact to the frame.\n\n{}",
                                keyHelp(), command->get_footer()));
    command->callback([options, &action] {
        if (options->player.isCurveListWanted) {
            action = showNamedCurves;
            return;
        }
        checkTogether(options->player);
        if (options->files.empty() && !options->otherwise.empty()) options->files = {options->otherwise};
        if (options->files.empty()) throw CLI::RequiredError("FILE");
        action = [options] { return options->isInfoWanted ? showInfo(*options) : play(*options); };
    });
}

} // namespace kvx
