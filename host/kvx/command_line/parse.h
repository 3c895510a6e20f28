// Parses the command line into the targets of the options. Compiling the library CLI11 takes seconds, so
// only parse.cpp includes it.
// All functions: [main].
#pragma once

#include "host/kvx/command_line/command.h"

#include <string>
#include <vector>

namespace kvx {

constexpr const char* helpOption = "--help";       ///< the option that parse() itself obeys
constexpr const char* versionOption = "--version"; ///< the option with which parse() checks no other argument

/// What the user has chosen.
struct Choice {
    const Command* command; ///< an element of `commands`, or `program` if the user has named no command
    bool isHelpWanted;      ///< the user has given --help; no other option has been read
};

/// Describe that the first of `words` is no command, with the command that the user may have meant: `kvx
/// play` if that word is the path of a file, or the first command with an option of that name.
std::string noCommand(const std::vector<std::string>& words, const std::vector<Command>& commands);

/// Find the command that the user has named, read its options and those of `program`, and check them.
/// A command is required unless an option of `program` is given. Before a failure, the name of the
/// command is set for messages.
/// Errors  throws WrongUsage, which ends with the advice to read --help.
Choice parse(const Command& program, const std::vector<Command>& commands, int argumentCount,
             const char* const* arguments);

} // namespace kvx
