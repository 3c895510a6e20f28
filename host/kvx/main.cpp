// kvx: plays files through the library, and shows what it registers, where it can play and what devices tell.
#include "host/kvx/commands.h"
#include "host/kvx/failure.h"

#include <cstdio>
#include <exception>

namespace {

enum ExitCode { exitGood = 0, exitFailed = 1, exitWrongUsage = 2 };

} // namespace

int main(int argumentCount, char** arguments)
{
    CLI::App app("Plays sound files through KVXAudio.so, and shows what the library holds.", "kvx");
    app.require_subcommand(1);
    app.footer("Exit codes: 0 good, 1 failed, 2 wrong usage, 130 ended by Ctrl-C.");

    kvx::Action action;
    kvx::addPlayCommand(app, action);
    kvx::addClassesCommand(app, action);
    kvx::addDevicesCommand(app, action);
    kvx::addGetCommand(app, action);
    kvx::addSetCommand(app, action);
    kvx::addTuneCommand(app, action);

    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exitGood : exitWrongUsage; // --help comes here too, and is good
    }

    try {
        return action();
    } catch (const kvx::WrongUsage& error) {
        std::fprintf(stderr, "kvx: %s\n", error.what());
        return exitWrongUsage;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kvx: %s\n", error.what());
        return exitFailed;
    }
}
