// kvx: plays and renders files through the library, and shows what it registers, where it can play and what
// devices tell.
#include "host/kvx/play/play_commands.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/message.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace kvx {
void addClassesCommand(CLI::App& app, Action& action);
void addDevicesCommand(CLI::App& app, Action& action);
void addGetCommand(CLI::App& app, Action& action);
void addSetCommand(CLI::App& app, Action& action);
void addTuneCommand(CLI::App& app, Action& action);
} // namespace kvx

namespace {

enum ExitCode { exitGood = 0, exitFailed = 1, exitWrongUsage = 2 };

int fail(const std::string& text, ExitCode code)
{
    kvx::printMessage(text);
    return code;
}

int failWithoutMemory()
{
    return fail("there is not enough memory; close other programs and try again", exitFailed);
}

bool isOutputWritten() { return std::fflush(stdout) == 0 && !std::ferror(stdout); }

int run(int argumentCount, char** arguments)
{
    CLI::App app("Plays and renders sound files through KVXAudio.so, and shows what the library holds.",
                 "kvx");
    app.require_subcommand(1);
    app.footer("Exit codes: 0 good, 1 failed or a file played in part, 2 wrong usage; ended by a signal 128 "
               "and its number: 130 by Ctrl-C, 143 by a request to end, 129 with its terminal.");

    kvx::Action action;
    kvx::addPlayCommand(app, action);
    kvx::addRenderCommand(app, action);
    kvx::addClassesCommand(app, action);
    kvx::addDevicesCommand(app, action);
    kvx::addGetCommand(app, action);
    kvx::addSetCommand(app, action);
    kvx::addSoundStreamCommand(app, action);
    kvx::addTuneCommand(app, action);

    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exitGood : exitWrongUsage; // --help comes here too, and is good
    }

    kvx::setCommandName(app.get_subcommands().front()->get_name());
    try {
        return action();
    } catch (const kvx::WrongUsage& error) {
        return fail(error.what(), exitWrongUsage);
    } catch (const std::bad_alloc&) {
        return failWithoutMemory();
    } catch (const std::length_error&) { // more than any memory holds
        return failWithoutMemory();
    } catch (const std::exception& error) {
        if (!isOutputWritten()) return exitFailed; // main() says so
        return fail(error.what(), exitFailed);
    }
}

// A file that is opened later must not take the place of a standard stream that the caller closed.
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
    for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN); // the write reports the error
    const int code = run(argumentCount, arguments);
    // With a terminal that closed, what is said is lost for a known reason.
    return isOutputWritten() || code > exitWrongUsage ? code : fail(kvx::OutputFailure().what(), exitFailed);
}
