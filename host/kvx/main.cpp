// The command `kvx`: plays and renders sound files through the library, and shows the library's classes and
// the audio devices. This file declares the subcommands, except those that play and render, and the exit
// codes.
#include "host/kvx/classes_and_devices.h"
#include "host/kvx/command_line/shared_options.h"
#include "host/kvx/files/tune.h"
#include "host/kvx/play/play_commands.h"
#include "host/kvx/properties/property_commands.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/message.h"
#include "host/kvx/text/terminal_text.h"
#include "host/runtime/support/errors.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

using kvx::Action;

enum ExitCode { exitGood = 0, exitFailed = 1, exitWrongUsage = 2 };

// ---- options ----

void addClassesCommand(CLI::App& app, Action& action)
{
    const auto options = std::make_shared<kvx::ClassesOptions>();
    CLI::App* const command = app.add_subcommand("classes", "Print the classes that the library registered");
    command->add_option("name", options->name, "One class, with all its members")->type_name("NAME");
    command->add_flag("--json", options->isJson, "As JSON");
    kvx::addLibraryOptions(*command, options->library);
    command->callback([options, &action] { action = [options] { return classesCommand(*options); }; });
}

void addDevicesCommand(CLI::App& app, Action& action)
{
    const auto options = std::make_shared<kvx::DevicesOptions>();
    CLI::App* const command = app.add_subcommand(
        "devices", "List the devices; `kvx play --device` and `kvx get` take a number or a name of the list");
    CLI::Option* const json = command->add_flag("--json", options->isJson, "As JSON");
    CLI::Option* const watch =
        command
            ->add_flag(
                "--watch", options->isWatching,
                "After the list, print a line for each device that comes, goes or changes, until Ctrl-C")
            ->excludes(json);
    command
        ->add_option("--demo", options->demoSeconds,
                     "With --watch: let simulated devices come, change and go, a step every SECONDS [1]")
        ->type_name("SECONDS")
        ->expected(0, 1)
        ->default_str("1")
        ->check(kvx::inRange(0.001, 3600))
        ->needs(watch);
    kvx::addLibraryOptions(*command, options->library);
    command->callback([options, &action] { action = [options] { return devicesCommand(*options); }; });
}

constexpr const char* objectHelp =
    "system; a device by its number in `kvx devices`, its name, a part of its name, or its UID; id:N or "
    "stream:N";
constexpr const char* selectorHelp =
    "Up to four characters (nsrt), a number (0x6E737274), or the library's name for it "
    "(kAudioDevicePropertyNominalSampleRate)";

void addPropertyOptions(CLI::App& command, kvx::PropertyOptions& options)
{
    command
        .add_option("--scope", options.scope,
                    "global, output, input, playthrough, or four characters [global]")
        ->type_name("S");
    command.add_option("--element", options.element, "0: all channels, 1: the first channel [0]")
        ->type_name("N");
    kvx::addLibraryOptions(command, options.library);
}

void addGetCommand(CLI::App& app, Action& action)
{
    const auto options = std::make_shared<kvx::PropertyOptions>();
    CLI::App* const command =
        app.add_subcommand("get", "Read a property of a device, a stream or the system");
    command->add_option("object", options->object, objectHelp)->required()->type_name("OBJECT");
    command
        ->add_option("selector", options->selector,
                     std::string(selectorHelp) + "; without SELECTOR, all properties")
        ->type_name("SELECTOR");
    command
        ->add_option("value", options->value,
                     "The value to convert or check, for properties that do so (v2db, sfm?, sscn)")
        ->type_name("VALUE");
    command->add_flag("--hex", options->isHex, "Print and read values as hexadecimal bytes");
    addPropertyOptions(*command, *options);
    command->callback([options, &action] { action = [options] { return getCommand(*options); }; });
}

void addSetCommand(CLI::App& app, Action& action)
{
    const auto options = std::make_shared<kvx::PropertyOptions>();
    CLI::App* const command = app.add_subcommand(
        "set",
        "Write a property and print its new value; exit code 1 if the new value is not VALUE. Simulated "
        "devices live as long as the command");
    command->add_option("object", options->object, objectHelp)->required()->type_name("OBJECT");
    command->add_option("selector", options->selector, selectorHelp)->required()->type_name("SELECTOR");
    command
        ->add_option("value", options->value,
                     "As `kvx get` prints it: 0.5, yes, 'spkr', rate=48000,channels=2; devices by name or ID")
        ->required()
        ->type_name("VALUE");
    command->add_flag("--hex", options->isHex, "VALUE is hexadecimal bytes: 0000003f");
    addPropertyOptions(*command, *options);
    command->callback([options, &action] { action = [options] { return setCommand(*options); }; });
}

void addTuneCommand(CLI::App& app, Action& action)
{
    struct Options {
        std::string path;
        bool isQuiet = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand("tune", "Write a short tune to a WAV file");
    command->add_option("file", options->path, "The file to write")->required()->type_name("OUT.wav");
    kvx::addQuietOption(*command, options->isQuiet);
    command->callback([options, &action] {
        action = [options] {
            kvx::writeTune(options->path);
            if (!options->isQuiet) fmt::print("{}\n", kvx::plainText(options->path));
            return exitGood;
        };
    });
}

// ---- exit codes ----

int fail(const std::string& text, ExitCode code)
{
    kvx::printMessage(text);
    return code;
}

bool isOutputWritten() { return std::fflush(stdout) == 0 && !std::ferror(stdout); }

/// Report an error, unless output was lost: main() then reports the lost output instead.
int failUnlessOutputIsLost(const std::string& text)
{
    return isOutputWritten() ? fail(text, exitFailed) : exitFailed;
}

int runAction(const Action& action)
{
    constexpr const char* noMemory = "there is not enough memory; close other programs and try again";
    try {
        return action();
    } catch (const kvx::WrongUsage& error) {
        return fail(error.what(), exitWrongUsage);
    } catch (const std::bad_alloc&) {
        return fail(noMemory, exitFailed);
    } catch (const std::length_error&) { // thrown by a container that would exceed the address space
        return fail(noMemory, exitFailed);
    } catch (const host::HostException& error) {
        if (error.className() == "OutOfMemoryException") return fail(noMemory, exitFailed);
        return failUnlessOutputIsLost(
            fmt::format("the library raised {}; check the arguments of the command", error.what()));
    } catch (const std::exception& error) {
        return failUnlessOutputIsLost(error.what());
    }
}

void nameChosenCommand(const CLI::App& app)
{
    for (const CLI::App* const command : app.get_subcommands()) kvx::setCommandName(command->get_name());
}

int run(int argumentCount, char** arguments)
{
    CLI::App app("Plays and renders sound files through KVXAudio.so, and shows the library's classes, the "
                 "audio devices and their properties.",
                 "kvx");
    app.require_subcommand(1);
    app.footer("Exit codes: 0 success, 1 failure or a file played in part, 2 wrong usage, 128 + n ended by "
               "signal n: 130 by Ctrl-C, 143 by a request to end, 129 by a closed terminal.");

    Action action;
    kvx::addPlayCommand(app, action);
    kvx::addRenderCommand(app, action);
    addClassesCommand(app, action);
    addDevicesCommand(app, action);
    addGetCommand(app, action);
    addSetCommand(app, action);
    kvx::addSoundStreamCommand(app, action);
    addTuneCommand(app, action);

    try {
        app.parse(argumentCount, arguments);
        nameChosenCommand(app);
        return runAction(action);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error); // the user has given --help, and app.exit() prints the help text
        nameChosenCommand(app);
        return fail(fmt::format("{}; --help lists the arguments", error.what()), exitWrongUsage);
    }
}

/// Open each standard stream that this process was started without, so that no other file gets the descriptor
/// of a standard stream.
void openStandardStreams()
{
    int file;
    do {
        file = open("/dev/null", O_RDWR);
    } while (file >= 0 && file <= STDERR_FILENO);
    if (file >= 0) close(file);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    openStandardStreams();
    for (const int signal : {SIGPIPE, SIGXFSZ})
        std::signal(signal, SIG_IGN); // a failed write then returns an error instead of ending the process
    const int code = run(argumentCount, arguments);
    // A code above exitWrongUsage means that a signal has ended the command, so lost output is not reported.
    return isOutputWritten() || code > exitWrongUsage ? code : fail(kvx::OutputFailure().what(), exitFailed);
}
