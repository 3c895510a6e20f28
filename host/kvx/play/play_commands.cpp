#include "host/kvx/play/play_commands.h"

#include "host/kvx/command_line/shared_options.h"
#include "host/kvx/files/output_format.h"
#include "host/kvx/play/buffered_play.h"
#include "host/kvx/play/play.h"
#include "host/kvx/terminal/keyboard.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/time_text.h"

#include <fmt/core.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace kvx {
namespace {

using soundclient::Labelling;

/// The values of the options of `kvx play` and `kvx soundstream`, in the units of the command line.
struct PlayCommandLine : PlayOptions {
    std::string otherwise;
    double gainDb = 0;
    bool isBuffered = false, isInfoWanted = false;
};

const char* const byteOrders =
    "Byte order: the library's sound component requests little-endian samples (\"sowt\") from its mixer, but "
    "reads the result as big-endian samples. So a program plays correctly if it fills its buffers with "
    "big-endian samples and labels them \"sowt\": in the component's format (44100 Hz, 16 bits, stereo, full "
    "volume), the mixer copies the bytes unchanged. This command does the same. It converts sample size and "
    "channels itself; other rates are refused, because the mixer would compute with swapped numbers. Buffers "
    "that are labelled correctly play byte-swapped, as loud noise: --buffers sowt (little-endian samples "
    "labelled \"sowt\") and --buffers twos (big-endian samples labelled \"twos\"). Turn the volume down "
    "first.";

/// Convert decibels to a factor; 0 dB is exactly 1.
float factorOf(double decibels) { return static_cast<float>(std::pow(10.0, decibels / 20.0)); }

int showNamedCurves()
{
    std::fputs(formatNamedCurves().c_str(), stdout);
    return 0;
}

void requireArgument(bool isGiven, const char* name)
{
    if (!isGiven) throw WrongUsage(fmt::format("{} is required", name));
}

/// A target that takes one of the words unchanged.
Target word(std::string& target, const std::vector<std::string>& words)
{
    std::vector<std::pair<std::string, std::string>> values;
    for (const std::string& each : words) values.emplace_back(each, each);
    return choice(target, values);
}

/// The words that --eq accepts in place of gains.
std::vector<std::string> curveWords()
{
    std::vector<std::string> words;
    for (const NamedCurve& curve : namedCurves()) words.push_back(curve.name);
    words.push_back("list");
    return words;
}

// In the tables of options, clang-format would break the rows.
// clang-format off

Option captureOption(std::string& path)
{
    return {"--capture", "OUT.wav", text(path),
            "Write the output of the device to OUT.wav, in 32-bit float", "", "", "--capture out.wav"};
}

/// The options of `kvx render` for the format and the level of the result.
OptionGroup resultOptions(ResultOptions& result)
{
    return {"Format and level", {
        {"--format", "NAME", word(result.request.name, formatNames()),
         "Format of the result", "", "by the extension of OUT.wav; without one, wav",
         "kvx render --format flac song.wav out"},
        {"--bits", "BITS", word(result.request.bits, bitNames()),
         "Bits of a sample in WAV, AIFF, CAF and FLAC; float has 32 bits", "", "float; FLAC 24", "--bits 16"},
        {"--no-dither", "", flag(result.isUndithered),
         "Round to 16, 24 or 32 bits without dither; samples that fit exactly are never dithered",
         "", "", "--bits 16 --no-dither"},
        {"--normalize", "", flag(result.isNormalized),
         "Scale the result so that its highest peak is full scale, 0 dB; decoded MP3, Ogg Vorbis and Opus can exceed it "
         "slightly", "", "", "--normalize"},
    }};
}

// clang-format on

std::string keysNote()
{
    return fmt::format("Keys, on a terminal and without --fast: {}. With --buffered: {}.",
                       formatKeySentence(allKeys()), formatKeyNames(bufferedKeys()));
}

/// The options of the file player, which the option --buffered excludes.
OptionGroup unbuffered(OptionGroup group)
{
    for (Option& option : group.options) option.excludes = "--buffered";
    group.title += " (not with --buffered)";
    return group;
}

/// `options`, a group, with one more option.
OptionGroup with(OptionGroup options, Option more)
{
    options.options.push_back(std::move(more));
    return options;
}

} // namespace

// clang-format off
OptionGroup playerOptions(PlayerOptions& options, const char* loopExample)
{
    const auto readGainsOrList = [&options](const std::string& value) {
        options.isCurveListWanted = value == "list";
        if (!options.isCurveListWanted) options.gains = readGains(value);
    };
    const auto readLoopOption = [&options](const std::string& value) { options.loop = readLoop(value); };
    const auto readMap = [&options](const std::string& value) { options.channelMap = readChannelMap(value); };
    // The range of --rate depends on --unit. This is the wider range; checkCombination() checks the other.
    const Range rates = rateRange(RateUnit::timePitch);
    return {"Sound and position", {
        // name, value, target
        // help, units, default, example
        {"--rate", "FACTOR", number(options.rate, rates.low, rates.high),
         "Speed, rounded to hundredths: 2 is twice as fast; from 0.25 to 4 with --unit varispeed",
         "times the speed of the file", "1", "--rate 1.5"},
        {"--pitch", "CENTS", number(options.pitch, pitchRange.low, pitchRange.high),
         "Pitch shift; an octave is 1200 cents",
         "cents", "0", "--pitch -100"},
        {"--unit", "UNIT", choice(options.unit, {{"time-pitch", RateUnit::timePitch}, {"varispeed", RateUnit::varispeed}}),
         "Unit that changes the speed: time-pitch keeps the pitch, varispeed changes both",
         "", "time-pitch", "--unit varispeed --rate 0.5"},
        {"--volume", "FACTOR", number(options.volume, volumeRange.low, volumeRange.high),
         "Volume: 0 is silence, 1 leaves every sample unchanged",
         "times the volume of the file", "1", "--volume 0.5"},
        {"--pan", "SIDE", number(options.pan, panRange.low, panRange.high),
         "Pan of mono and stereo: -1 left only, 1 right only",
         "of the way to a side", "0", "--pan -0.5"},
        {"--eq", "GAINS", withWords(reading(readGainsOrList), curveWords()),
         "31 gains separated by commas, or the name of a curve; `kvx play --eq list` prints the bands and the curves",
         "or gains of -20 to 20 dB", "flat", "--eq bass"},
        {"--channel-map", "LIST", reading(readMap),
         "Channel of the file for each channel of the device: 1,0 swaps left and right, 2,3 plays the next two; "
         "channels count from 0, as in `kvx picture`; -1 is silence",
         "", "0,1,...", "--channel-map 1,0"},
        {"--start", "TIME", time(options.start, 0, 1e9),
         "Start position in the file",
         timeUnits, "0", "--start 0:02.5"},
        {"--loop", "IN:OUT|IN-OUT", reading(readLoopOption),
         "Start at IN, and jump back from OUT to IN: IN:OUT in plain seconds, such as 1.5:4, or IN-OUT with minutes",
         timeUnits, "", loopExample},
        {"--background", "", flag(options.isInBackground),
         "Load the file on a background thread",
         "", "", "--background"},
    }};
}

// clang-format on

Command playCommand()
{
    const auto line = std::make_shared<PlayCommandLine>();
    Command command = {"play", "Play sound files, one after the other", "FILE...", "kvx play {} song.wav"};
    // clang-format off
    command.groups = {
        {"Arguments", {
            {"FILE", "", texts(line->files),
             "Any files that libsndfile reads, folders of such files, and playlists (.m3u, .m3u8, .pls); - is standard "
             "input",
             "", "", "kvx play song.wav more.wav"},
            {"-r,--recursive", "", flag(line->isRecursive),
             "Also play the files of the folders in a folder", "", "", "kvx play --recursive ."},
            {"--loop-all", "", flag(line->isEndless),
             "Play the files again and again, until q or Ctrl-C", "", "", "--loop-all"},
            {"--duration", "TIME", time(line->player.duration, 0.001, 1e6),
             "Maximum length of the sound of each file", timeUnits, "", "--duration 0:10"},
        }},
        unbuffered(playerOptions(line->player)),
        {"From the disk", {
            {"--buffered", "", flag(line->isBuffered),
             "Decode the files while they play, with the buffered player of the library: for files larger than the "
             "memory, and without gaps between files", "", "", "--buffered"},
            {"--gain", "DB", number(line->gainDb, -120, 40),
             "With --buffered: gain; 0 leaves every sample unchanged", "dB", "0", "--buffered --gain -6", "--buffered"},
        }},
        with(deviceOptions(line->device), captureOption(line->capture)),
        {"Output and other", {
            {"--keep", "NAME", text(line->keep),
             "On the simulated device, and without --capture: write the output to NAME.wav, and a picture of its "
             "waveform and spectrogram to NAME.png", "", "", "--device simulated --keep kept"},
            {"--info", "", flag(line->isInfoWanted),
             "Do not play: print each file's container, codec, bit depth and tags, and the formats, rate, channels and "
             "duration that the library reports",
             "", "", "--info"},
            {"--json", "", flag(line->isJson),
             "With --info: print JSON", "", "", "--info --json", "--info"},
            {"--otherwise", "FILE", text(line->otherwise),
             "The file to play if no FILE is given", "", "", "kvx play --otherwise song.wav"},
            quietOption(line->isQuiet),
        }},
        libraryOptions(line->library),
    };
    command.library = &line->library;
    // clang-format on
    command.notes = {
        keysNote(),
        "A loop jumps back at the end of the device's slice that reaches OUT; `kvx render` can be "
        "exact to the frame."};
    command.check = [line] {
        if (line->player.isCurveListWanted) return;
        checkCombination(line->player);
        if (line->files.empty() && !line->otherwise.empty()) line->files = {line->otherwise};
        requireArgument(!line->files.empty(), "FILE");
        refuseOtherThanWave(line->capture, "--capture " + line->capture);
        refuseOtherThanWave(line->keep, "--keep " + line->keep);
        if (const std::filesystem::path kept = line->keep; kept.extension() == ".wav")
            line->keep = kept.parent_path() / kept.stem();
        line->method = line->isBuffered ? PlayMethod::buffered : PlayMethod::file;
        line->gain = factorOf(line->gainDb);
    };
    command.run = [line] {
        if (line->player.isCurveListWanted) return showNamedCurves();
        return line->isInfoWanted ? showFileInfo(*line) : play(*line);
    };
    return command;
}

Command renderCommand()
{
    const auto options = std::make_shared<RenderOptions>();
    Command command = {"render",
                       "Render a file as `kvx play` plays it, faster than real time, into a sound file",
                       "FILE OUT.wav", "kvx render {} song.wav out.wav"};
    // clang-format off
    command.groups = {
        {"Arguments", {
            {"FILE", "", text(options->from),
             "Any file that libsndfile reads; - is standard input", "", "", "kvx render song.wav out.wav"},
            {"OUT.wav", "", text(options->result.path),
             "The result. Its extension chooses the format: .wav, .aiff, .caf, .flac, .ogg, .opus or .mp3; - is "
             "standard output", "", "", "kvx render song.wav out.flac"},
        }},
        {"Result", {
            {"--device-rate", "HZ", number(options->deviceRate, lowestRate, highestRate),
             "Sample rate of the result", "Hz", "the rate of the file; Opus 48000", "--device-rate 48000"},
            {"--duration", "TIME", time(options->player.duration, 0.001, 1e6),
             "Maximum length of the result; with --loop, the exact length", timeUnits, "", "--duration 0:03"},
            quietOption(options->isQuiet),
        }},
        resultOptions(options->result),
        playerOptions(options->player, "--loop 0:01.5-0:04 --duration 0:10"), // a loop has no end
        libraryOptions(options->library),
    };
    command.library = &options->library;
    // clang-format on
    command.notes = {
        "The result has the file's channels, or with --channel-map those of the map; mono becomes stereo "
        "with "
        "--pan. At the file's rate, --rate 1 and --pitch 0 a loop jumps back exactly at OUT; otherwise at "
        "the end "
        "of the slice of 512 frames that reaches OUT.",
        "If the result goes to standard output, messages go to standard error, and the header of a WAV file "
        "states an unknown length: `kvx render song.wav - | PROGRAM`."};
    command.check = [options] {
        if (options->player.isCurveListWanted) return;
        checkCombination(options->player);
        requireArgument(!options->from.empty(), "FILE");
        requireArgument(!options->result.path.empty(), "OUT.wav");
        if (options->player.loop && !options->player.duration)
            throw WrongUsage("--loop: a loop has no end; give the length of OUT.wav with --duration");
        if (options->deviceRate != std::floor(options->deviceRate))
            throw WrongUsage("--device-rate: a file has a whole number of frames per second");
        options->result.format = chooseFormat(options->result.path, options->result.request);
    };
    command.run = [options] {
        return options->player.isCurveListWanted ? showNamedCurves() : render(*options);
    };
    return command;
}

Command soundStreamCommand()
{
    const auto line = std::make_shared<PlayCommandLine>();
    line->method = PlayMethod::classic;
    Command command = {"soundstream",
                       "Play a sound file as classic programs do, through the library's sound component",
                       "FILE", "kvx soundstream {} song.wav"};
    const std::vector<std::pair<std::string, Labelling>> labellings = {
        {"swapped", Labelling::bigAsLittle}, {"sowt", Labelling::little}, {"twos", Labelling::big}};
    // clang-format off
    command.groups = {
        {"Arguments", {
            {"FILE", "", reading([line](const std::string& path) { line->files = {path}; }),
             "Any file of 44100 Hz that libsndfile reads; - is standard input",
             "", "", "kvx soundstream song.wav", "", "", true},
        }},
        {"Sound", {
            {"--gain", "DB", number(line->gainDb, -120, 40),
             "Gain; 0 leaves every sample of 16 bits unchanged", "dB", "0", "--gain -6"},
            {"--buffers", "WHAT", choice(line->labelling, labellings),
             "Byte order and label of the buffers; see below", "", "swapped", "--buffers swapped"},
            {"--development", "", flag(line->library.isDevelopment),
             "Report a debug run to the library, as the development environment does; the component then cannot be "
             "opened", "", "", "--development"},
            quietOption(line->isQuiet),
        }},
        with(deviceOptions(line->device), captureOption(line->capture)),
        libraryOptions(line->library),
    };
    command.library = &line->library;
    // clang-format on
    command.notes = {"Keys, on a terminal and without --fast: space pause, ? all keys, q quit.", byteOrders};
    command.check = [line] {
        refuseOtherThanWave(line->capture, "--capture " + line->capture);
        line->gain = factorOf(line->gainDb);
    };
    command.run = [line] { return play(*line); };
    return command;
}

} // namespace kvx
