// The table of all commands of the program `kvx`.
// All functions: [main].
#pragma once

#include "host/kvx/command_line/command.h"

#include <vector>

namespace kvx {

/// The options that every command has, and the program without a command.
struct GeneralOptions {
    bool isVersionWanted = false; ///< --version; only without a command
    bool isVerbose = false;       ///< --verbose
};

/// The general options of this process, which reading the command line sets.
const GeneralOptions& generalOptions();

/// All commands, in the order of the help.
std::vector<Command> allCommands();

/// The program itself: the options that stand without a command, and the notes of the help.
Command program();

/// Print the help of a command that allCommands() or program() has returned.
void printHelp(const Command& command);

} // namespace kvx
