#include "host/kvx/command_line/parse.h"

#include "host/kvx/command_line/nearest_word.h"
#include "host/kvx/text/message.h"
#include "host/kvx/text/shell_text.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace kvx {
namespace {

using Kind = Target::Kind;

void addOption(CLI::App& app, const Option& option)
{
    if (option.target.kind == Kind::flag) {
        app.add_flag(option.names);
        return;
    }
    CLI::Option* const added = app.add_option(option.names);
    if (option.target.kind == Kind::repeated) added->expected(CLI::detail::expected_max_vector_size);
    if (option.target.kind == Kind::optionalValue) added->expected(0, 1)->default_str(option.initial);
    added->required(option.isRequired);
}

void addOptions(CLI::App& app, const Command& command)
{
    app.set_help_flag(); // removes the flag of CLI11, which would not see a wrong argument before it
    forEachOption(command, [&](const Option& option) { addOption(app, option); });
    forEachOption(command, [&](const Option& option) {
        CLI::Option* const added = app.get_option(option.longName());
        if (!option.needs.empty()) added->needs(app.get_option(option.needs));
        if (!option.excludes.empty()) added->excludes(app.get_option(option.excludes));
    });
}

void readOption(const CLI::App& app, const Option& option)
{
    const CLI::Option& parsed = *app.get_option(option.longName());
    if (parsed.count() == 0) return;
    if (option.target.kind == Kind::flag) {
        option.target.read(option.longName(), {});
        return;
    }
    for (const std::string& text : parsed.results()) option.target.read(option.longName(), text);
}

std::vector<std::string> optionNames(const Command& command)
{
    std::vector<std::string> names;
    forEachOption(command, [&](const Option& option) {
        if (!option.isArgument()) names.push_back(option.longName());
    });
    return names;
}

std::string suggestion(const std::string& word, const std::vector<std::string>& words)
{
    std::vector<std::string> longer; // the words that begin with `word`
    std::copy_if(words.begin(), words.end(), std::back_inserter(longer),
                 [&](const std::string& each) { return each.rfind(word, 0) == 0; });
    const std::string nearest = longer.size() == 1 ? longer.front() : nearestWord(word, words);
    return nearest.empty() ? "" : fmt::format(" (did you mean {}?)", nearest);
}

/// Describe an argument that no option and no command takes.
std::string describeExtra(const std::vector<std::string>& extras, const Command& command,
                          const std::vector<Command>& commands)
{
    for (const std::string& word : extras)
        if (word.size() > 1 && word.front() == '-')
            return fmt::format("there is no option {}{}", word,
                               suggestion(word.substr(0, word.find('=')), optionNames(command)));
    const std::string& word = extras.front();
    if (!command.name.empty()) return fmt::format("{} is one argument too many", word);
    return noCommand(extras, commands);
}

} // namespace

std::string noCommand(const std::vector<std::string>& words, const std::vector<Command>& commands)
{
    const std::string& word = words.front();
    std::error_code ignored;
    if (std::filesystem::exists(word, ignored))
        return fmt::format("there is no command {} (to play it: `kvx play {}`)", word, quotedForShell(word));
    std::string arguments;
    for (const std::string& each : words)
        arguments += (arguments.empty() ? "--" : " ") + quotedForShell(each);
    std::vector<std::string> names;
    for (const Command& each : commands) {
        names.push_back(each.name);
        const std::vector<std::string> options = optionNames(each);
        if (std::find(options.begin(), options.end(), "--" + word) != options.end())
            return fmt::format("there is no command {} (did you mean `kvx {} {}`?)", word, each.name,
                               arguments);
    }
    return fmt::format("there is no command {}{}", word, suggestion(word, names));
}

Choice parse(const Command& program, const std::vector<Command>& commands, int argumentCount,
             const char* const* arguments)
{
    CLI::App app;
    app.require_subcommand(0, 1); // a second name of a command is an argument
    addOptions(app, program);
    for (const Command& command : commands) addOptions(*app.add_subcommand(command.name), command);

    std::string error;
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ArgumentMismatch& thrown) {
        const std::string text = thrown.what(); // begins with the name of the option and a colon
        error = text.substr(0, text.find(':')) + " takes exactly one value";
    } catch (const CLI::ParseError& thrown) {
        error = thrown.what();
    }
    const std::vector<CLI::App*> parsed = app.get_subcommands();
    const CLI::App& chosenApp = parsed.empty() ? app : *parsed.front();
    const auto chosen = std::find_if(commands.begin(), commands.end(), [&](const Command& each) {
        return !parsed.empty() && each.name == chosenApp.get_name();
    });
    const Command& command = chosen == commands.end() ? program : *chosen;
    if (!command.name.empty()) setCommandName(command.name);

    if (app.count(helpOption) + chosenApp.count(helpOption) > 0) return {&command, true};
    std::vector<std::string> extras = chosenApp.remaining();
    forEachOption(program, [&](const Option& option) { // so that --verbose works after a wrong argument, too
        for (const CLI::App* each : {static_cast<const CLI::App*>(&app), &chosenApp})
            if (option.target.kind == Kind::flag && each->get_option_no_throw(option.longName()))
                readOption(*each, option);
    });
    for (const CLI::App* each : {static_cast<const CLI::App*>(&app), &chosenApp})
        if (const CLI::Option* version = each->get_option_no_throw(versionOption);
            version && version->count() > 0)
            return {&command, false};
    extras.erase(std::remove(extras.begin(), extras.end(), "--"), extras.end()); // ends the options
    try {
        if (!extras.empty()) throw WrongUsage(describeExtra(extras, command, commands));
        if (!error.empty()) throw WrongUsage(error);
        if (argumentCount < 2) throw WrongUsage("a command is required");
        forEachOption(program, [&](const Option& option) { readOption(app, option); });
        if (!command.name.empty())
            forEachOption(command, [&](const Option& option) { readOption(chosenApp, option); });
        if (command.check) command.check();
    } catch (const WrongUsage& wrong) {
        throw WrongUsage(fmt::format("{}; --help lists the arguments", wrong.what()));
    }
    return {&command, false};
}

} // namespace kvx
