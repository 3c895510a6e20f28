#include "host/kvx/text/message.h"

#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

#include <utility>
#include <vector>

namespace kvx {
namespace {

std::string commandName;
std::vector<std::pair<std::string, std::string>> inputNames; // path of a copy, name of the input

} // namespace

void setCommandName(std::string name) { commandName = std::move(name); }

void showInMessages(std::string path, std::string name)
{
    inputNames.emplace_back(std::move(path), std::move(name));
}

std::string withInputNames(std::string text)
{
    for (const auto& [path, name] : inputNames)
        for (std::size_t at = 0; (at = text.find(path, at)) != text.npos; at += name.size())
            text.replace(at, path.size(), name);
    return text;
}

void printMessage(const std::string& text)
{
    const char* const separator = commandName.empty() ? "" : ": ";
    fmt::print(stderr, "kvx: {}{}{}\n", commandName, separator, plainText(withInputNames(text)));
}

} // namespace kvx
