#include "host/kvx/play/play_commands.h"

#include "host/kvx/play/play.h"
#include "host/kvx/terminal/keyboard.h"
#include "host/kvx/text/failure.h"

#include <cmath>
#include <cstdio>
#include <map>
#include <memory>

namespace kvx {
namespace {

using soundclient::Labelling;

/// The values of the options of `kvx play` and `kvx soundstream`, in the units of the command line.
struct PlayCommandLine : PlayOptions {
    std::string file, otherwise;
    std::string buffers = "swapped";
    double gainDb = 0;
    bool isBuffered = false, isInfoWanted = false;
};

const std::map<std::string, Labelling> labellings = {
    {"swapped", Labelling::bigAsLittle}, {"sowt", Labelling::little}, {"twos", Labelling::big}};

constexpr const char* byteOrders =
    "Byte order: the library's sound component requests little-endian samples (\"sowt\") from its mixer,\n"
    "but reads the result as big-endian samples. So a program plays correctly if it fills its buffers with\n"
    "big-endian samples and labels them \"sowt\": in the component's format (44100 Hz, 16 bits, stereo, "
    "full\n"
    "volume), the mixer copies the bytes unchanged. This command does the same. It converts sample size and\n"
    "channels itself; other rates are refused, because the mixer would compute with swapped numbers.\n"
    "Buffers that are labelled correctly play byte-swapped, as loud noise: --buffers sowt (little-endian\n"
    "samples labelled \"sowt\") and --buffers twos (big-endian samples labelled \"twos\"). Turn the volume\n"
    "down first.";

/// Call a function that may throw WrongUsage, and rethrow the error as the error class of CLI11.
template <class Function>
auto orParseError(Function function)
{
    try {
        return function();
    } catch (const WrongUsage& error) {
        throw CLI::ValidationError(error.what());
    }
}

/// Convert decibels to a factor; 0 dB is exactly 1.
float factorOf(double decibels) { return static_cast<float>(std::pow(10.0, decibels / 20.0)); }

int showNamedCurves()
{
    std::fputs(formatNamedCurves().c_str(), stdout);
    return 0;
}

void addCapture(CLI::App& command, std::string& path)
{
    command.add_option("--capture", path, "Write the output of the device to OUT.wav, in 32-bit float")
        ->type_name("OUT.wav");
}

CLI::Option* addGain(CLI::App& command, double& gainDb, const char* help)
{
    return command.add_option("--gain", gainDb, help)->type_name("DB")->check(inRange(-120.0, 40.0));
}

/// Set `action` if the user requests the list of equaliser curves; if not, check how the options combine.
/// Returns  whether `action` was set.
bool showsCurves(const PlayerOptions& options, Action& action)
{
    if (options.isCurveListWanted)
        action = showNamedCurves;
    else
        orParseError([&] { checkCombination(options); });
    return options.isCurveListWanted;
}

} // namespace

std::vector<CLI::Option*> addPlayerOptions(CLI::App& command, PlayerOptions& options)
{
    const auto number = [&command](const char* name, std::optional<double>& value, const Range& range,
                                   const char* help, const char* type) {
        return command.add_option(name, value, help)->type_name(type)->check(inRange(range.low, range.high));
    };
    const auto text = [&command](const char* name, const std::function<void(const std::string&)>& read,
                                 const char* help, const char* type) {
        return command
            .add_option_function<std::string>(
                name, [read](const std::string& value) { orParseError([&] { read(value); }); }, help)
            ->type_name(type);
    };
    const auto readGainsOrList = [&options](const std::string& value) {
        options.isCurveListWanted = value == "list";
        if (!options.isCurveListWanted) options.gains = readGains(value);
    };
    const auto readUnit = [&options](const std::string& value) {
        options.unit = value == "varispeed" ? RateUnit::varispeed : RateUnit::timePitch;
    };
    return {
        // The range of --rate depends on --unit, so checkCombination() checks --rate after the parse.
        command
            .add_option("--rate", options.rate,
                        "Speed, rounded to hundredths: 2 is twice as fast [1]; 0.04 to 32, with varispeed "
                        "0.25 to 4")
            ->type_name("FACTOR"),
        number("--pitch", options.pitch, pitchRange, "Pitch shift in cents; an octave is 1200 [0]", "CENTS"),
        number("--volume", options.volume, volumeRange,
               "Volume: 0 is silence, 1 leaves every sample unchanged [1]", "FACTOR"),
        number("--pan", options.pan, panRange, "Pan of mono and stereo: -1 left only, 1 right only [0]",
               "SIDE"),
        text("--eq", readGainsOrList,
             "31 gains from -20 to 20 dB, separated by commas, or the name of a curve; `--eq list` prints "
             "the names",
             "GAINS"),
        text(
            "--loop", [&options](const std::string& value) { options.loop = readLoop(value); },
            "Start at IN, and jump back from OUT to IN; in seconds", "IN:OUT"),
        number("--start", options.start, {0, 1e9}, "Start position, in seconds of the file", "SECONDS"),
        text(
            "--channel-map",
            [&options](const std::string& value) { options.channelMap = readChannelMap(value); },
            "Channel of the file for each channel of the device: 1,0 swaps left and right; channels count "
            "from 0, -1 is silence",
            "LIST"),
        text("--unit", readUnit,
             "Unit that changes the speed: time-pitch keeps the pitch, varispeed changes both [time-pitch]",
             "UNIT")
            ->check(CLI::IsMember({"time-pitch", "varispeed"})),
        command.add_flag("--background", options.isInBackground, "Load the file on a background thread"),
    };
}

void addPlayCommand(CLI::App& app, Action& action)
{
    const auto line = std::make_shared<PlayCommandLine>();
    CLI::App& command = *app.add_subcommand("play", "Play sound files, one after the other");
    command.add_option("files", line->files, "Any files that libsndfile reads")->type_name("FILE");
    addDeviceOptions(command, line->device);
    addCapture(command, line->capture);
    command
        .add_option("--keep", line->keep,
                    "On the simulated device, and without --capture: write the output to NAME.wav, and a "
                    "picture of its waveform to NAME.png")
        ->type_name("NAME");
    command.add_flag(
        "--info", line->isInfoWanted,
        "Do not play: print each file's formats, rate, channels and duration as the library reports them");
    CLI::Option* buffered = command.add_flag("--buffered", line->isBuffered,
                                             "Decode the files while they play, with the buffered player of "
                                             "the library: for files larger than the "
                                             "memory, and without gaps between files");
    addGain(command, line->gainDb, "With --buffered: gain in decibels; 0 leaves every sample unchanged")
        ->needs(buffered);
    for (CLI::Option* option : addPlayerOptions(command, line->player)) option->excludes(buffered);
    command.add_option("--otherwise", line->otherwise, "The file to play if no FILE is given")
        ->type_name("FILE");
    addQuietOption(command, line->isQuiet);
    addLibraryOptions(command, line->library);
    command.footer(fmt::format("{} (on a terminal, without --buffered and --fast).\n\n"
                               "A loop jumps back at the end of the device's slice that reaches OUT; `kvx "
                               "render` can be exact to the frame.\n\n{}",
                               keyHelp(), command.get_footer()));
    command.callback([line, &action] {
        if (showsCurves(line->player, action)) return;
        if (line->files.empty() && !line->otherwise.empty()) line->files = {line->otherwise};
        if (line->files.empty()) throw CLI::RequiredError("FILE");
        line->method = line->isBuffered ? PlayMethod::buffered : PlayMethod::file;
        line->gain = factorOf(line->gainDb);
        action = [line] { return line->isInfoWanted ? showFileInfo(*line) : play(*line); };
    });
}

void addRenderCommand(CLI::App& app, Action& action)
{
    const auto options = std::make_shared<RenderOptions>();
    CLI::App& command = *app.add_subcommand(
        "render", "Render a file as `kvx play` plays it, faster than real time, into a WAV file");
    command.add_option("file", options->from, "Any file that libsndfile reads")->type_name("FILE");
    command.add_option("out", options->to, "The result: WAV, 32-bit float, the same bytes each time")
        ->type_name("OUT.wav");
    command.add_option("--device-rate", options->deviceRate, "Sample rate of the result [the file's]")
        ->type_name("HZ")
        ->check(inRange(lowestRate, highestRate));
    command
        .add_option("--duration", options->duration,
                    "Maximum length of the result; with --loop, the exact length")
        ->type_name("SECONDS")
        ->check(inRange(0.001, 1e6));
    addQuietOption(command, options->isQuiet);
    addPlayerOptions(command, options->player);
    addLibraryOptions(command, options->library);
    command.footer(
        "OUT.wav has the file's channels, or with --channel-map those of the map; mono becomes stereo with "
        "--pan. At the file's rate, --rate 1 and --pitch 0 a loop jumps back exactly at OUT; otherwise at "
        "the "
        "end of the slice of 512 frames that reaches OUT.\n\n" +
        command.get_footer());
    command.callback([options, &action] {
        if (showsCurves(options->player, action)) return;
        if (options->from.empty()) throw CLI::RequiredError("FILE");
        if (options->to.empty()) throw CLI::RequiredError("OUT.wav");
        if (options->player.loop && !options->duration)
            throw CLI::ValidationError("--loop",
                                       "a loop has no end; give the length of OUT.wav with --duration");
        if (options->deviceRate != std::floor(options->deviceRate))
            throw CLI::ValidationError("--device-rate", "a WAV file has a whole number of frames per second");
        action = [options] { return render(*options); };
    });
}

void addSoundStreamCommand(CLI::App& app, Action& action)
{
    const auto line = std::make_shared<PlayCommandLine>();
    CLI::App& command = *app.add_subcommand(
        "soundstream", "Play a sound file as classic programs do, through the library's sound component");
    command.add_option("file", line->file, "Any file of 44100 Hz that libsndfile reads")
        ->type_name("FILE")
        ->required();
    addDeviceOptions(command, line->device);
    addCapture(command, line->capture);
    addGain(command, line->gainDb, "Gain in decibels; 0 leaves every sample of 16 bits unchanged");
    command
        .add_option("--buffers", line->buffers,
                    "Byte order and label of the buffers: swapped, sowt or twos; see below [swapped]")
        ->type_name("WHAT")
        ->check(CLI::IsMember({"swapped", "sowt", "twos"}));
    command.add_flag("--development", line->library.isDevelopment,
                     "Report a debug run to the library, as the development environment does; the component "
                     "then cannot be opened");
    addQuietOption(command, line->isQuiet);
    addLibraryOptions(command, line->library);
    command.footer(fmt::format("Keys: space pause, q quit (on a terminal, without --fast).\n\n{}\n\n{}",
                               byteOrders, command.get_footer()));
    command.callback([line, &action] {
        line->files = {line->file};
        line->method = PlayMethod::classic;
        line->labelling = labellings.at(line->buffers);
        line->gain = factorOf(line->gainDb);
        action = [line] { return play(*line); };
    });
}

} // namespace kvx
