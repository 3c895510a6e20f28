#include "host/kvx/command_line/manual_page.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>

namespace kvx {
namespace {

/// Write text so that it is printed unchanged: `-` stays a hyphen that can be pasted, and a line that begins
/// with a dot or an apostrophe is no request.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '\\':
            result += "\\e";
            break;
        case '-':
            result += "\\-";
            break;
        case '`':
            result += "\\(ga";
            break;
        case '\'':
            result += "\\(aq";
            break;
        case '^':
            result += "\\(ha";
            break;
        case '~':
            result += "\\(ti";
            break;
        default:
            result += c;
        }
    }
    return result.empty() || result.front() != '.' ? result : "\\&" + result;
}

std::string inUpperCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

std::string section(const std::string& title)
{
    return fmt::format(".SH \"{}\"\n", inUpperCase(escaped(title)));
}

/// A term in bold, and its text indented below.
std::string item(const std::string& bold, const std::string& italic, const std::string& text)
{
    const std::string value = italic.empty() ? "" : fmt::format(" \\fI{}\\fR", escaped(italic));
    return fmt::format(".TP\n\\fB{}\\fR{}\n{}\n", escaped(bold), value, escaped(text));
}

std::string optionItem(const Command& command, const Option& option)
{
    std::string names = option.names;
    if (const auto comma = names.find(','); comma != names.npos) names.insert(comma + 1, " ");
    const std::string values = formatValues(option), example = exampleOf(command, option);
    const std::string value =
        option.target.kind == Target::Kind::optionalValue ? "[" + option.value + "]" : option.value;
    const std::string text = values.empty() ? option.help : fmt::format("{} ({})", option.help, values);
    return item(names, value, text + ".") +
           (example.empty() ? "" : fmt::format(".br\nExample:\n.nh\n\\fB{}\\fR\n.hy\n", escaped(example)));
}

/// References to the other pages.
std::string seeAlso(const Command& command, const std::vector<Command>& commands)
{
    std::string text = section("See also");
    if (!command.name.empty()) return text + ".BR kvx (1)\n";
    for (const Command& each : commands)
        text += fmt::format(".BR {} (1){}\n", escaped(manualPageName(each)),
                            &each == &commands.back() ? "" : ",");
    return text;
}

} // namespace

std::string manualPageName(const Command& command)
{
    return command.name.empty() ? "kvx" : "kvx-" + command.name;
}

std::string manualPage(const Command& command, const std::vector<Command>& commands)
{
    const std::string name = manualPageName(command);
    const std::string call = command.name.empty() ? "kvx" : "kvx " + command.name;
    std::string page = fmt::format(".TH \"{}\" 1 \"\" \"KVX Audio\"\n", inUpperCase(escaped(name)));
    page += section("Name") + fmt::format("{} \\- {}\n", escaped(name), escaped(command.summary));
    page += section("Synopsis") +
            fmt::format("\\fB{}\\fR [\\fIOPTIONS\\fR] {}\n", escaped(call), escaped(command.arguments));
    if (command.name.empty()) {
        page += section("Commands");
        for (const Command& each : commands) page += item(each.name, "", each.summary + ".");
    }
    page += section("Arguments and options");
    for (const OptionGroup& group : command.groups) {
        page += fmt::format(".SS \"{}\"\n", escaped(group.title));
        for (const Option& option : group.options) page += optionItem(command, option);
    }
    if (!command.notes.empty()) page += section("Notes");
    for (const std::string& note : command.notes) page += ".PP\n" + escaped(note) + "\n";
    return page + seeAlso(command, commands);
}

} // namespace kvx
