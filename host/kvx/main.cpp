// kvx: plays and renders files through the library, and shows what it registers, where it can play and what
// devices tell.
#include "host/kvx/commands.h"
#include "host/kvx/failure.h"
#include "host/kvx/plain_text.h"

#include <csignal>
#include <cstdio>
#include <exception>

namespace {

enum ExitCode { exitGood = 0, exitFailed = 1, exitWrongUsage = 2 };

int fail(const std::string& text, ExitCode code)
{
    std::fprintf(stderr, "kvx: %s\n", kvx::plainText(text).c_str());
    return code;
}

bool isOutputWritten() { return std::fflush(stdout) == 0 && !std::ferror(stdout); }

int run(int argumentCount, char** arguments)
{
    CLI::App app("Plays and renders sound files through KVXAudio.so, and shows what the library holds.",
                 "kvx");
    app.require_subcommand(1);
    app.footer(
        "Exit codes: 0 good, 1 failed, 2 wrong usage; ended by a signal 128 and its number: 130 by Ctrl-C, "
        "143 by a request to end, 129 with its terminal.");

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

    try {
        return action();
    } catch (const kvx::WrongUsage& error) {
        return fail(error.what(), exitWrongUsage);
    } catch (const std::exception& error) {
        if (!isOutputWritten()) return exitFailed; // main() says so
        return fail(error.what(), exitFailed);
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes is an error like any other
    const int code = run(argumentCount, arguments);
    // With a terminal that closed, what is said is lost for a known reason.
    return isOutputWritten() || code > exitWrongUsage ? code : fail(kvx::OutputFailure().what(), exitFailed);
}
