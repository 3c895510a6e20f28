// Formats the help of a command.
// All functions: [any].
#pragma once

#include "host/kvx/command_line/command.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kvx {

/// Format the help of a command: usage, the options by group, notes. The help of the program, which has an
/// empty name, also lists `commands`.
/// Units  `width` in terminal columns; examples may be wider, so that they can be copied as one line.
std::string helpText(const Command& command, const std::vector<Command>& commands, std::size_t width);

} // namespace kvx
