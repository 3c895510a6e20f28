// The commands `kvx play`, `kvx render` and `kvx soundstream`, with their options.
// All functions: [main].
#pragma once

#include "host/kvx/command_line/command.h"

namespace kvx {

Command playCommand();
Command renderCommand();
Command soundStreamCommand();

} // namespace kvx
