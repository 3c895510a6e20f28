#include "host/kvx/command_line/help_text.h"

#include "host/kvx/text/terminal_text.h"
#include "host/kvx/text/wrapped_text.h"

#include <fmt/core.h>

namespace kvx {
namespace {

constexpr std::size_t helpColumn = 24; // the column in which the texts of options and commands begin

/// A name, and a text in the column of texts, on the next line if the name is too long.
std::string formatItem(const std::string& name, const std::string& text, std::size_t width)
{
    const std::string left = "  " + name;
    const bool isLong = displayWidth(left) + 2 > helpColumn;
    const std::string gap =
        isLong ? "\n" + std::string(helpColumn, ' ') : std::string(helpColumn - displayWidth(left), ' ');
    return left + gap + wrapText(text, width, helpColumn, helpColumn);
}

std::string formatName(const Option& option)
{
    std::string names = option.names;
    if (const auto comma = names.find(','); comma != names.npos) names.insert(comma + 1, " ");
    if (option.value.empty()) return names;
    const bool mayLackValue = option.target.kind == Target::Kind::optionalValue;
    return names + (mayLackValue ? fmt::format(" [{}]", option.value) : " " + option.value);
}

std::string formatOption(const Command& command, const Option& option, std::size_t width)
{
    const std::string values = formatValues(option), example = exampleOf(command, option);
    std::string text = option.help;
    if (!values.empty()) text += fmt::format(" ({})", values);
    std::string item = formatItem(formatName(option), text, width);
    if (!example.empty()) item += std::string(helpColumn, ' ') + "Example: " + example + "\n";
    return item;
}

std::string formatCommands(const std::vector<Command>& commands, std::size_t width)
{
    std::string text = "\nCommands\n";
    for (const Command& command : commands) text += formatItem(command.name, command.summary, width);
    return text;
}

} // namespace

std::string helpText(const Command& command, const std::vector<Command>& commands, std::size_t width)
{
    const std::string name = command.name.empty() ? "kvx" : "kvx " + command.name;
    std::string text = wrapText(command.summary, width) + "\n";
    text += wrapText(fmt::format("Usage: {} [OPTIONS] {}", name, command.arguments), width);
    if (command.name.empty()) text += formatCommands(commands, width);
    for (const OptionGroup& group : command.groups) {
        text += "\n" + group.title + "\n";
        for (const Option& option : group.options) text += formatOption(command, option, width);
    }
    for (const std::string& note : command.notes) text += "\n" + wrapText(note, width);
    return text;
}

} // namespace kvx
