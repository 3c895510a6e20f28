// kvx devices: a look at the devices, or a watch over them.
#include "host/kvx/devices/demo.h"
#include "host/kvx/devices/device_table.h"
#include "host/kvx/devices/shared_options.h"
#include "host/kvx/devices/watch.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/format.h>

#include <ctime>
#include <memory>
#include <optional>

namespace kvx {
namespace {

struct DevicesOptions {
    bool isJson = false;
    bool isWatching = false;
    double demoSeconds = 0; ///< 0: no demo
    LibraryOptions library;
};

constexpr double pollSeconds = 0.1;      // how long Ctrl-C may have to wait
constexpr double demoPollSeconds = 0.01; // and the demo's next step

std::string clockTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    return fmt::format("{:02}:{:02}:{:02}", local.tm_hour, local.tm_min, local.tm_sec);
}

/// A line that is there at once, whoever reads it.
void sayNow(const std::string& line)
{
    fmt::print("{}  {}\n", clockTime(), line);
    std::fflush(stdout);
}

int watch(host::Host& host, const CoreAudio& core, const DevicesOptions& options)
{
    InterruptGuard guard;
    Watch devices(host, core, sayNow);
    fmt::print("{}", deviceTable(devices.devices(), devices.roles(), terminalWidth()));
    std::fflush(stdout);

    std::optional<Demo> demo;
    if (options.demoSeconds > 0) demo.emplace(host, core, options.demoSeconds);
    bool isSeen = true; // what the demo did last: it goes on only then, so that no change hides another
    while (!isInterrupted()) {
        if (demo && isSeen) isSeen = !demo->turn();
        if (devices.turn(demo ? demoPollSeconds : pollSeconds)) isSeen = true;
    }
    return interruptExitCode();
}

int devices(const DevicesOptions& options)
{
    Library library(options.library);
    int exitCode = 0;
    {
        checkHardware();
        const CoreAudio core(library.host());
        if (options.isWatching) {
            exitCode = watch(library.host(), core, options);
        } else if (options.isJson) {
            fmt::print("{}\n", deviceJson(readAllDevices(core), readRoles(core)));
        } else {
            fmt::print("{}", deviceTable(readAllDevices(core), readRoles(core), terminalWidth()));
        }
    }
    return reportLeaks(library, exitCode);
}

} // namespace

void addDevicesCommand(CLI::App& app, Action& action)
{
    auto options = std::make_shared<DevicesOptions>();
    CLI::App* command = app.add_subcommand(
        "devices", "List the devices; number or name go with `kvx play --device` and `kvx get`");
    CLI::Option* json = command->add_flag("--json", options->isJson, "As JSON");
    CLI::Option* watching =
        command
            ->add_flag("--watch", options->isWatching,
                       "Go on: a line for each device that comes, goes or changes, until Ctrl-C")
            ->excludes(json);
    command
        ->add_option("--demo", options->demoSeconds,
                     "With --watch: let simulated devices come, change and go, a step every SECONDS [1]")
        ->type_name("SECONDS")
        ->expected(0, 1)
        ->default_str("1")
        ->check(inRange(0.001, 3600))
        ->needs(watching);
    addLibraryOptions(*command, options->library);
    command->callback([options, &action] { action = [options] { return devices(*options); }; });
}

} // namespace kvx
