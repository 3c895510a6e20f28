// Messages to the user on stderr: "kvx: COMMAND: what, why, next step".
// All functions: [main].
#pragma once

#include <string>
#include <string_view>

namespace kvx {

/// Set the name of the running subcommand, such as "play", for all later messages.
void setCommandName(std::string name);

/// Show `name` in place of `path` in all later texts: the name of an input that was copied to `path`.
void showInMessages(std::string path, std::string name);

/// Replace the paths of copied inputs in a text by the names of the inputs.
std::string withInputNames(std::string text);

/// Print one message and a newline to stderr. Control characters are replaced as in plainText(), and
/// paths as in withInputNames().
void printMessage(const std::string& text);

} // namespace kvx
