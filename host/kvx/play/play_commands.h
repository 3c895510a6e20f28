// The arguments and options of `kvx play`, `kvx render` and `kvx soundstream`.
// All functions: [main].
#pragma once

#include "host/kvx/command_line/shared_options.h"
#include "host/kvx/play/player_options.h"

#include <vector>

namespace kvx {

/// Add a subcommand to `app`. Later, parsing the command line sets `action` if the user has chosen it.
void addPlayCommand(CLI::App& app, Action& action);
void addRenderCommand(CLI::App& app, Action& action);
void addSoundStreamCommand(CLI::App& app, Action& action);

/// Add the options of the file player to `command`. Later, parsing the command line sets `options`.
/// Returns  the added options.
std::vector<CLI::Option*> addPlayerOptions(CLI::App& command, PlayerOptions& options);

} // namespace kvx
