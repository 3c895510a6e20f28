#include "host/kvx/commands.h"

#include "host/kvx/classes_and_devices.h"
#include "host/kvx/command_line/completions.h"
#include "host/kvx/command_line/help_text.h"
#include "host/kvx/command_line/manual_page.h"
#include "host/kvx/command_line/nearest_word.h"
#include "host/kvx/command_line/parse.h"
#include "host/kvx/command_line/shared_options.h"
#include "host/kvx/doctor/doctor.h"
#include "host/kvx/files/atomic_file.h"
#include "host/kvx/files/output_format.h"
#include "host/kvx/files/tune.h"
#include "host/kvx/picture/picture_command.h"
#include "host/kvx/play/play_commands.h"
#include "host/kvx/properties/property_commands.h"
#include "host/kvx/text/shell_text.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <unistd.h>

namespace kvx {
namespace {

constexpr std::size_t plainWidth = 80, widestHelp = 100; // columns without a terminal; most columns

GeneralOptions general;

/// The options of every command. `start` is the command line before an option: "kvx play ".
OptionGroup generalGroup(const std::string& start)
{
    const Target help = {Target::Kind::flag, {}}; // parse() obeys this option without reading it
    return {"General",
            {{"-h,--help", "", help, "Print this help", "", "", start + "--help"},
             {"--verbose", "", flag(general.isVerbose),
              "At the end, print what a report of a problem needs: versions, library, device, formats", "",
              "", "--verbose"},
             {versionOption, "", flag(general.isVersionWanted), "Print the version and the revision", "", "",
              "--version"}}};
}

/// Replace a leading ~ by the user's home folder, as a shell does.
std::string inHomeFolder(const std::string& path)
{
    if (path != "~" && path.rfind("~/", 0) != 0) return path;
    const char* home = std::getenv("HOME");
    if (!home) throw Failure(fmt::format("{}: HOME is not set; name a FOLDER without ~", path));
    return home + path.substr(1);
}

/// Print what man, bash and zsh still need to find the files in `folder`.
void printNextSteps(const std::string& folder)
{
    const auto quoted = [path = std::filesystem::absolute(folder)](const char* name) {
        return quotedForShell((path / name).string());
    };
    fmt::print(
        "Read a page: `man -M {} kvx-play`; to read pages without -M: `export MANPATH={}:` in ~/.profile.\n"
        "Complete in bash without the package bash-completion: `source {}` in ~/.bashrc.\n"
        "Complete in zsh: `fpath=({} $fpath)` before compinit in ~/.zshrc.\n",
        quoted("man"), quoted("man"), quoted("bash-completion/completions/kvx"),
        quoted("zsh/site-functions"));
}

/// Write the manual pages and the completions into the folders in which man and the shells look for them.
void writeHelpFiles(const std::string& folder, bool isQuiet)
{
    const std::vector<Command> commands = allCommands();
    const Command top = program();
    std::vector<std::pair<std::string, std::string>> files = {
        {"bash-completion/completions/kvx", bashCompletion(top, commands)},
        {"zsh/site-functions/_kvx", zshCompletion(top, commands)},
        {"fish/vendor_completions.d/kvx.fish", fishCompletion(top, commands)},
        {"man/man1/kvx.1", manualPage(top, commands)},
    };
    for (const Command& command : commands)
        files.push_back(
            {fmt::format("man/man1/{}.1", manualPageName(command)), manualPage(command, commands)});
    for (const auto& [name, text] : files) {
        const std::filesystem::path path = std::filesystem::path(folder) / name;
        std::error_code ignored; // a folder that cannot be made fails in the next step
        std::filesystem::create_directories(path.parent_path(), ignored);
        errno = 0;
        std::ofstream file(path, std::ios::binary);
        file << text;
        file.close();
        if (!file) throw cannotWrite(path.string(), errno);
        if (!isQuiet) fmt::print("{}\n", plainText(path.string()));
    }
    if (!isQuiet) printNextSteps(folder);
}

// In the tables of options, clang-format would break the rows.
// clang-format off

Command classesCommand()
{
    const auto options = std::make_shared<ClassesOptions>();
    Command command = {"classes", "Print the classes that the library registered", "[NAME]", "kvx classes {}"};
    command.groups = {
        {"Arguments", {
            {"NAME", "", text(options->name),
             "One class, with all its members", "", "", "AUPlayerKVX"},
        }},
        {"Output", {jsonOption(options->isJson)}},
        libraryOptions(options->library),
    };
    command.library = &options->library;
    command.run = [options] { return runClasses(*options); };
    return command;
}

Command devicesCommand()
{
    const auto options = std::make_shared<DevicesOptions>();
    Command command = {"devices",
                       "List the devices; `kvx play --device` and `kvx get` take a number or a name of the list",
                       "", "kvx devices {}"};
    command.groups = {
        {"Output", {jsonOption(options->isJson)}},
        {"Changes", {
            {"--watch", "", flag(options->isWatching),
             "After the list, print a line for each device that comes, goes or changes, until Ctrl-C",
             "", "", "--watch", "", "--json"},
            {"--demo", "SECONDS", orDefault(number(options->demoSeconds, 0.001, 3600)),
             "With --watch: let simulated devices come, change and go, a step every SECONDS",
             "seconds", "1", "--watch --demo 0.5", "--watch"},
        }},
        libraryOptions(options->library),
    };
    command.library = &options->library;
    command.run = [options] { return runDevices(*options); };
    return command;
}

const char* const objectHelp =
    "system; a device by its row in `kvx devices` (N or row:N), its name, a part of its name, or its UID; simulated, the "
    "simulated output device; an object by its ID, id:N or stream:N";
const char* const selectorHelp =
    "Up to four characters (nsrt), a number (0x6E737274), the library's name for it "
    "(kAudioDevicePropertyNominalSampleRate), or a word";

/// The options that choose a part of the object; `example` is an example of --element.
OptionGroup addressOptions(PropertyOptions& options, const char* example)
{
    return {"Part of the object", {
        {"--scope", "S", text(options.scope),
         "global, output, input, playthrough, or four characters", "", "global", "--scope output"},
        {"--element", "N", text(options.element),
         "0: all channels, 1: the first channel", "", "0", example},
    }};
}

Command getCommand()
{
    const auto options = std::make_shared<PropertyOptions>();
    Command command = {"get", "Read a property of a device, a stream or the system",
                       "OBJECT [SELECTOR [VALUE...]]", "kvx get {} 0 nsrt"};
    command.groups = {
        {"Arguments", {
            {"OBJECT", "", text(options->object),
             objectHelp, "", "", "kvx get 0", "", "", true},
            {"SELECTOR", "", withWords(text(options->selector), selectorWords()),
             std::string("Without SELECTOR, all properties. ") + selectorHelp, "", "", "kvx get 0 nsrt"},
            {"VALUE", "", texts(options->value),
             "The value to convert or check, for properties that do so (v2db, sfm?, sscn)",
             "", "", "kvx get 0 v2db 0.5 --element 1"},
        }},
        {"Output", {
            {"--hex", "", flag(options->isHex),
             "Print and read values as hexadecimal bytes", "", "", "--hex"},
            jsonOption(options->isJson),
        }},
        addressOptions(*options, "kvx get --element 1 0 volm"),
        libraryOptions(options->library),
    };
    command.library = &options->library;
    command.run = [options] { return runGet(*options); };
    return command;
}

Command setCommand()
{
    const auto options = std::make_shared<PropertyOptions>();
    Command command = {"set",
                       "Write a property and print its new value; exit code 1 if the new value is not VALUE. "
                       "Simulated devices live as long as the command",
                       "OBJECT SELECTOR VALUE...", "kvx set {} 0 nsrt 48000"};
    command.groups = {
        {"Arguments", {
            {"OBJECT", "", text(options->object),
             objectHelp, "", "", "kvx set 0 nsrt 48000", "", "", true},
            {"SELECTOR", "", withWords(text(options->selector), selectorWords()),
             selectorHelp, "", "", "kvx set 0 nsrt 48000", "", "", true},
            {"VALUE", "", texts(options->value),
             "As `kvx get` prints it: 0.5, yes, 'spkr', rate=48000,channels=2; devices by name, ID or row:N",
             "", "", "kvx set 0 nsrt 48000", "", "", true},
        }},
        {"Output", {jsonOption(options->isJson)}},
        {"Input", {
            {"--hex", "", flag(options->isHex),
             "VALUE is hexadecimal bytes", "", "", "kvx set --hex 0 volm 0000003f --element 1"},
        }},
        addressOptions(*options, "kvx set --element 1 0 volm 0.5"),
        libraryOptions(options->library),
    };
    command.library = &options->library;
    command.run = [options] { return runSet(*options); };
    return command;
}

Command tuneCommand()
{
    struct Options {
        std::string path;
        bool isQuiet = false;
    };
    const auto options = std::make_shared<Options>();
    Command command = {"tune", "Write a short tune to a WAV file", "OUT.wav", "kvx tune {} out.wav"};
    command.groups = {
        {"Arguments", {
            {"OUT.wav", "", text(options->path),
             "The file to write", "", "", "kvx tune out.wav", "", "", true},
        }},
        {"Output", {quietOption(options->isQuiet)}},
    };
    command.check = [options] { refuseOtherThanWave(options->path, options->path); };
    command.run = [options] {
        writeTune(options->path);
        if (!options->isQuiet) fmt::print("{}\n", plainText(options->path));
        return 0;
    };
    return command;
}

Command pictureCommand()
{
    const auto options = std::make_shared<PictureOptions>();
    Command command = {"picture", "Draw the waveform and the spectrogram of a sound file, with axes", "FILE OUT.png",
                       "kvx picture {} song.wav song.png"};
    command.groups = {
        {"Arguments", {
            {"FILE", "", text(options->from),
             "Any file that libsndfile reads", "", "", "kvx picture song.wav song.png", "", "", true},
            {"OUT.png", "", text(options->to),
             "The picture; its name ends in .png", "", "", "kvx picture song.wav song.png", "", "", true},
        }},
        {"Output", {
            {"--width", "PIXELS", number(options->size.width, leastPictureWidth, mostPictureSize),
             "Width of the picture", "pixels", "1200", "--width 1600"},
            {"--height", "PIXELS", number(options->size.height, leastPictureHeight, mostPictureSize),
             "Height of the picture", "pixels", "800", "--height 600"},
            quietOption(options->isQuiet),
        }},
    };
    command.notes = {
        "Each channel has a lane: peaks in light blue, RMS in dark blue, in dB of full scale. The spectrogram shows, "
        "for each frequency, the channel with the highest level, from -120 dB to 0 dB, the level of a sine of full "
        "scale."};
    command.run = [options] { return runPicture(*options); };
    return command;
}

Command doctorCommand()
{
    const auto options = std::make_shared<DoctorOptions>();
    Command command = {"doctor",
                       "Check the libraries, devices, sound servers and limits, and name what helps; exit code 1 if "
                       "no device can play",
                       "", "kvx doctor {}"};
    command.groups = {
        {"Output", {jsonOption(options->isJson)}},
        libraryOptions(options->library),
    };
    command.library = &options->library;
    command.run = [options] { return runDoctor(*options); };
    return command;
}

Command helpCommand()
{
    struct Options {
        std::string name, folder;
        bool isQuiet = false;
    };
    const auto options = std::make_shared<Options>();
    Command command = {"help", "Print the help of a command, as `kvx COMMAND --help` does", "[COMMAND]", "kvx help {}"};
    command.groups = {
        {"Arguments", {
            {"COMMAND", "", text(options->name),
             "The command to explain; without COMMAND, the program", "", "", "play"},
        }},
        {"Output", {
            {"--files", "FOLDER", orDefault(text(options->folder)),
             "Write the manual pages, and the completions for bash, zsh and fish, into folders of FOLDER, and print "
             "the next steps", "", "~/.local/share", "--files ~/.local/share"},
            quietOption(options->isQuiet),
        }},
    };
    command.run = [options] {
        if (!options->folder.empty()) {
            writeHelpFiles(inHomeFolder(options->folder), options->isQuiet);
            return 0;
        }
        const std::vector<Command> commands = allCommands();
        const auto found = std::find_if(commands.begin(), commands.end(),
                                        [&](const Command& each) { return each.name == options->name; });
        if (!options->name.empty() && found == commands.end())
            throw WrongUsage(noCommand({options->name}, commands) + "; `kvx help` lists the commands");
        printHelp(found == commands.end() ? program() : *found);
        return 0;
    };
    return command;
}

// clang-format on

} // namespace

const GeneralOptions& generalOptions() { return general; }

std::vector<Command> allCommands()
{
    std::vector<Command> commands = {
        playCommand(),        renderCommand(), classesCommand(), devicesCommand(), getCommand(), setCommand(),
        soundStreamCommand(), tuneCommand(),   pictureCommand(), doctorCommand(),  helpCommand()};
    std::vector<std::string> names;
    for (const Command& command : commands) names.push_back(command.name);
    Target& explained = commands.back().groups.front().options.front().target; // COMMAND of `kvx help`
    explained = withWords(explained, names);
    for (Command& command : commands) command.groups.push_back(generalGroup("kvx " + command.name + " "));
    return commands;
}

Command program()
{
    Command program = {
        "",
        "Plays and renders sound files through KVXAudio.so, and shows the library's classes, the "
        "audio devices and their properties",
        "COMMAND", "kvx {}"};
    program.groups = {generalGroup("kvx ")};
    program.notes = {
        "`kvx help COMMAND` explains a command.",
        "Exit codes: 0 success, 1 failure or a file played in part, 2 wrong usage, 128 + n ended by "
        "signal n: 130 by Ctrl-C, 143 by a request to end, 129 by a closed terminal."};
    return program;
}

void printHelp(const Command& command)
{
    const std::size_t columns = terminalWidth(STDOUT_FILENO);
    const std::string text =
        helpText(command, allCommands(), columns == 0 ? plainWidth : std::min(columns, widestHelp));
    std::fputs(text.c_str(), stdout);
}

} // namespace kvx
