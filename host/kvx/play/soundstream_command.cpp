// kvx soundstream: a file the classic way, through the library's sound component. Things are checked and done
// in the order of `kvx play`.
#include "host/kvx/files/capture.h"
#include "host/kvx/files/write_aside.h"
#include "host/kvx/play/classic_play.h"
#include "host/kvx/play/play_commands.h"
#include "host/kvx/play/programme.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/progress.h"
#include "host/kvx/text/failure.h"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>

namespace kvx {
namespace {

using soundclient::Labelling;

struct SoundStreamOptions {
    std::string file;
    DeviceRequest device;
    std::string capture;
    bool isQuiet = false;
    std::string labelling = "swapped";
    ClassicOptions classic;
    LibraryOptions library;
};

// The class keeps its converter for good.
const std::vector<KVXLiveCount> kept = {{"AudioConverter", 1}};

const std::map<std::string, Labelling> labellings = {
    {"swapped", Labelling::bigAsLittle}, {"sowt", Labelling::little}, {"twos", Labelling::big}};

constexpr const char* byteOrders =
    "Byte order: the library's sound component asks its mixer for little-endian samples (called \"sowt\"),\n"
    "and reads what it gets as big-endian ones. So a program is heard right when it fills its buffers with\n"
    "big-endian samples and calls them \"sowt\": in the component's own form (44100 Hz, 16 bits, stereo,\n"
    "full volume) they pass the mixer byte for byte. This command does that. It brings width and channels\n"
    "there itself; other rates are refused, since the mixer would compute with the swapped numbers.\n"
    "Buffers that are honest are heard byte-swapped, as loud noise: --buffers sowt (little-endian samples,\n"
    "called so) and --buffers twos (big-endian ones, called so). Turn the volume down first.";

int playStream(const SoundStreamOptions& options)
{
    Progress progress(verbosityFor(options.isQuiet, stdout), stdout);
    const std::vector<Run> runs = planProgramme({options.file});
    const ProgrammeFile file = filesOf(runs).front();
    const KVXDeviceInfo device = chooseDevice(options.device);
    refuseToOverwrite({file.path}, options.capture, "--capture");

    InterruptGuard guard; // from here on there may be a file to clear away
    std::optional<Capture> capture;
    if (!options.capture.empty()) capture.emplace(device.device, options.capture);
    Library library(options.library);

    warnOfMissingParts(runs, progress);
    progress.say(printDevice(device, options.device));
    const bool isHeard =
        playClassic(library.host(), file, options.classic, device, options.device.isStepped, progress);
    if (isInterrupted()) progress.leaveLine();
    progress.say(isInterrupted() ? "Stopped." : "Done.");
    if (capture && (isHeard || !isInterrupted())) {
        capture->keep();
        progress.say(fmt::format("What would have been heard: {}",
                                 std::filesystem::absolute(options.capture).string()));
    }
    return reportLeaks(library, progress.exitCode(), kept);
}

} // namespace

void addSoundStreamCommand(CLI::App& app, Action& action)
{
    auto options = std::make_shared<SoundStreamOptions>();
    CLI::App* command = app.add_subcommand(
        "soundstream", "Play a sound file as classic programs do, through the library's sound component");
    command->add_option("file", options->file, "Any file of 44100 Hz that libsndfile reads")
        ->type_name("FILE")
        ->required();
    addDeviceOptions(*command, options->device);
    command->add_option("--capture", options->capture, "Keep what the device plays, in 32-bit float")
        ->type_name("OUT.wav");
    command
        ->add_option("--gain", options->classic.gainDb,
                     "Louder or softer; 0 leaves every sample of 16 bits as it is")
        ->type_name("DB")
        ->check(inRange(-120.0, 40.0));
    command
        ->add_option("--buffers", options->labelling,
                     "What buffers hold and are called: swapped, sowt or twos; see below [swapped]")
        ->type_name("WHAT")
        ->check(CLI::IsMember({"swapped", "sowt", "twos"}));
    command->add_flag("--development", options->library.isDevelopment,
                      "Answer the library as the development environment does: the component then cannot be "
                      "opened");
    command->add_flag("--quiet", options->isQuiet, "Say nothing but errors");
    addLibraryOptions(*command, options->library);
    command->footer(fmt::format("Keys: space pause, q quit (on a terminal, without --fast).\n\n{}\n\n{}",
                                byteOrders, command->get_footer()));
    command->callback([options, &action] {
        options->classic.labelling = labellings.at(options->labelling);
        action = [options] { return playStream(*options); };
    });
}

} // namespace kvx
