// Formats the manual page of a command.
// All functions: [any].
#pragma once

#include "host/kvx/command_line/command.h"

#include <string>
#include <vector>

namespace kvx {

/// The name of the manual page of a command: "kvx-play", or "kvx" for the program.
std::string manualPageName(const Command& command);

/// Format the manual page of a command in section 1, for the macro package `man`. The page of the program,
/// which has an empty name, also lists `commands`.
std::string manualPage(const Command& command, const std::vector<Command>& commands);

} // namespace kvx
