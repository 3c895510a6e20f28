// The command line of `kvx play`, `kvx render` and `kvx soundstream`.
// All functions: [main].
#pragma once

#include "host/kvx/devices/shared_options.h"
#include "host/kvx/play/player_options.h"

#include <vector>

namespace kvx {

/// Add the subcommand. Parsing the command line sets `action` if the user has chosen the subcommand.
void addPlayCommand(CLI::App& app, Action& action);
void addRenderCommand(CLI::App& app, Action& action);
void addSoundStreamCommand(CLI::App& app, Action& action);

/// Add the options of the file player. Parsing the command line sets `options`.
/// Returns  all added options.
std::vector<CLI::Option*> addPlayerOptions(CLI::App& command, PlayerOptions& options);

} // namespace kvx
