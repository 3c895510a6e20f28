// The subcommands. Each adds its part to the command line; when it is the chosen one, `action` is what to do.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>

namespace kvx {

/// Does the work of a subcommand and returns the exit code. Throws Failure and other standard exceptions.
using Action = std::function<int()>;

/// A number from `low` to `high`, and a number at all: CLI::Range lets "nan" pass.
CLI::Validator inRange(double low, double high);

void addPlayCommand(CLI::App& app, Action& action);
void addRenderCommand(CLI::App& app, Action& action);
void addClassesCommand(CLI::App& app, Action& action);
void addDevicesCommand(CLI::App& app, Action& action);
void addGetCommand(CLI::App& app, Action& action);
void addSetCommand(CLI::App& app, Action& action);
void addSoundStreamCommand(CLI::App& app, Action& action);
void addTuneCommand(CLI::App& app, Action& action);

} // namespace kvx
