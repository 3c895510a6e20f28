// Messages to the user on stderr: "kvx: COMMAND: what, why, next step".
// All functions: [main].
#pragma once

#include <string>
#include <string_view>

namespace kvx {

/// Set the name of the running subcommand, such as "play", for all later messages.
void setCommandName(std::string name);

/// Print one message and a newline to stderr. Control characters are replaced as in plainText().
void printMessage(std::string_view text);

} // namespace kvx
