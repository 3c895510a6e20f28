// The commands `kvx play`, `kvx render` and `kvx soundstream`, with their options.
// All functions: [main].
#pragma once

#include "host/kvx/command_line/command.h"
#include "host/kvx/play/player_options.h"

namespace kvx {

/// The options of the file player, which `kvx play` and `kvx render` share. `loopExample` is the example of
/// --loop.
OptionGroup playerOptions(PlayerOptions& options, const char* loopExample = "--loop 0:01.5-0:04");

Command playCommand();
Command renderCommand();
Command soundStreamCommand();

} // namespace kvx
