// The parts of the command line that several commands share: options, a check of numbers, the type of
// actions. Compiling the library CLI11 takes seconds, so only the sources that declare options include this
// header.
//
// All functions: [main].
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/library/library.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <functional>
#include <string>

namespace kvx {

/// A function that runs a subcommand. Parsing the command line chooses the action; main() runs it.
/// Returns  the exit code.
/// Errors   throws Failure and other standard exceptions.
using Action = std::function<int()>;

/// Make a check that accepts a number from `low` to `high`. Unlike CLI::Range, it refuses "nan".
inline CLI::Validator inRange(double low, double high)
{
    const auto check = [low, high](const std::string& text) {
        double value = 0;
        const bool isGood = CLI::detail::lexical_cast(text, value) && value >= low && value <= high;
        return isGood ? std::string() : fmt::format("{} is not a number from {} to {}", text, low, high);
    };
    return CLI::Validator(check, fmt::format("{} - {}", low, high));
}

inline void addQuietOption(CLI::App& command, bool& isQuiet)
{
    command.add_flag("--quiet", isQuiet, "Print errors only");
}

/// Add the options `--library` and `--host-version`.
inline void addLibraryOptions(CLI::App& command, LibraryOptions& options)
{
    command.add_option("--library", options.path, "The library to load [KVXAudio.so beside this program]")
        ->type_name("PATH");
    command
        .add_option("--host-version", options.hostVersion, "The host version that the library sees [2016.0]")
        ->type_name("V")
        ->check(inRange(2000.0, 2100.0));
}

/// Add the options `--device`, `--device-rate` and `--fast`, for commands that play to a device.
inline void addDeviceOptions(CLI::App& command, DeviceRequest& request)
{
    command.add_option("--device", request.choice, "Name, part of a name, or number of `kvx devices`")
        ->type_name("DEVICE");
    command.add_option("--device-rate", request.rate, "Sample rate of the simulated device")
        ->type_name("HZ")
        ->check(inRange(lowestRate, highestRate));
    command.add_flag("--fast", request.isStepped, "Run the simulated device faster than real time");
}

} // namespace kvx
