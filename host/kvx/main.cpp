// The command `kvx`: plays and renders sound files through the library, and shows the library's classes and
// the audio devices. This file runs the chosen command, and turns errors into messages and exit codes.
#include "host/kvx/command_line/parse.h"
#include "host/kvx/commands.h"
#include "host/kvx/problem_report.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/message.h"
#include "host/kvx/version.h"
#include "host/runtime/support/errors.h"

#include <fmt/core.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

enum ExitCode { exitGood = 0, exitFailed = 1, exitWrongUsage = 2 };

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

/// Call `body`, which returns the exit code, and report the exceptions of `body`.
template <class Body>
int runReportingErrors(Body body)
{
    constexpr const char* noMemory = "there is not enough memory; close other programs and try again";
    try {
        return body();
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

int run(int argumentCount, char** arguments)
{
    const kvx::Command program = kvx::program();
    const std::vector<kvx::Command> commands = kvx::allCommands();
    return runReportingErrors([&] {
        const kvx::LibraryOptions* library = nullptr;
        const int code = runReportingErrors([&] {
            const kvx::Choice choice = kvx::parse(program, commands, argumentCount, arguments);
            if (choice.isHelpWanted) {
                kvx::printHelp(*choice.command);
                return int{exitGood};
            }
            if (kvx::generalOptions().isVersionWanted) {
                fmt::print("kvx {}\n", kvx::versionText);
                return int{exitGood};
            }
            library = choice.command->library;
            return choice.command->run ? choice.command->run() : int{exitGood};
        });
        if (kvx::generalOptions().isVerbose)
            fmt::print(stderr, "{}",
                       kvx::problemReport(kvx::versionText, argumentCount, arguments,
                                          library ? *library : kvx::LibraryOptions()));
        return code;
    });
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
