// Scripts with which a shell completes the command line of `kvx`: commands, options, words of options, files.
// All functions: [any].
#pragma once

#include "host/kvx/command_line/command.h"

#include <string>
#include <vector>

namespace kvx {

std::string bashCompletion(const Command& program, const std::vector<Command>& commands);
std::string zshCompletion(const Command& program, const std::vector<Command>& commands);
std::string fishCompletion(const Command& program, const std::vector<Command>& commands);

} // namespace kvx
