// The subcommands that play or render sound files.
#pragma once

#include "host/kvx/devices/shared_options.h"

namespace kvx {

/// Add the subcommand to the command line. Parsing the command line sets `action` if the user chose this
/// subcommand.
/// [main]
void addPlayCommand(CLI::App& app, Action& action);
void addRenderCommand(CLI::App& app, Action& action);
void addSoundStreamCommand(CLI::App& app, Action& action);

} // namespace kvx
