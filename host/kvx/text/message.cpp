#include "host/kvx/text/message.h"

#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

namespace kvx {
namespace {

std::string commandName;

} // namespace

void setCommandName(std::string name) { commandName = std::move(name); }

void printMessage(std::string_view text)
{
    const char* const separator = commandName.empty() ? "" : ": ";
    fmt::print(stderr, "kvx: {}{}{}\n", commandName, separator, plainText(text));
}

} // namespace kvx
