#include "host/kvx/command_line/completions.h"

#include <fmt/format.h>

#include <algorithm>

namespace kvx {
namespace {

using Kind = Target::Kind;

/// The names of an option, such as "-r" and "--recursive".
std::vector<std::string> namesOf(const Option& option)
{
    const auto comma = option.names.find(',');
    if (comma == option.names.npos) return {option.names};
    return {option.names.substr(0, comma), option.names.substr(comma + 1)};
}

bool hasValue(const Option& option) { return !option.isArgument() && option.target.kind != Kind::flag; }

/// Whether the value is a path. The name of the value says so.
bool isFile(const Option& option)
{
    const std::string& name = option.isArgument() ? option.names : option.value;
    return name == "FILE" || name == "FOLDER" || name == "PATH" || name.find('.') != name.npos;
}

bool takesFiles(const Command& command)
{
    bool isFound = false;
    forEachOption(
        command, [&](const Option& option) { isFound = isFound || (option.isArgument() && isFile(option)); });
    return isFound;
}

std::string optionWords(const Command& command)
{
    std::vector<std::string> words;
    forEachOption(command, [&](const Option& option) {
        if (option.isArgument()) return;
        for (const std::string& name : namesOf(option)) words.push_back(name);
    });
    return fmt::format("{}", fmt::join(words, " "));
}

/// The words that an argument of a command may be: the names of commands for `kvx help`.
std::string argumentWords(const Command& command)
{
    std::string words;
    forEachOption(command, [&](const Option& option) {
        if (option.isArgument()) words += fmt::format("{}", fmt::join(option.target.choices, " "));
    });
    return words;
}

/// The first clause of a text, without the characters that have a meaning in a quoted text of any shell.
std::string shortText(const std::string& text)
{
    std::string clause = text.substr(0, text.find_first_of(":;"));
    for (const char special : {'\'', '`', '[', ']', '"', '\\', '$'})
        clause.erase(std::remove(clause.begin(), clause.end(), special), clause.end());
    return clause;
}

std::string commandNames(const std::vector<Command>& commands)
{
    std::vector<std::string> names;
    for (const Command& command : commands) names.push_back(command.name);
    return fmt::format("{}", fmt::join(names, " "));
}

// ---- bash ----

/// The branch of `case` for one command: the values of options, then options, or arguments.
std::string bashCommand(const Command& command)
{
    std::string withoutWords, values; // options whose values are not completed; branches of the other options
    forEachOption(command, [&](const Option& option) {
        if (!hasValue(option)) return;
        std::string names;
        for (const std::string& name : namesOf(option)) names += (names.empty() ? "" : "|") + name;
        if (isFile(option))
            values += fmt::format("        {}) _kvx_files; return;;\n", names);
        else if (!option.target.choices.empty())
            values += fmt::format("        {}) words='{}'; return;;\n", names,
                                  fmt::join(option.target.choices, " "));
        else
            withoutWords += (withoutWords.empty() ? "" : "|") + names;
    });
    if (!withoutWords.empty()) values += fmt::format("        {}) return;;\n", withoutWords);
    const std::string rest =
        takesFiles(command) ? "_kvx_files" : fmt::format("words='{}'", argumentWords(command));
    return fmt::format("    {})\n"
                       "      case $previous in\n{}"
                       "      esac\n"
                       "      case $current in\n"
                       "        -*) words='{}';;\n"
                       "        *) {};;\n"
                       "      esac;;\n",
                       command.name, values, optionWords(command), rest);
}

} // namespace

std::string bashCompletion(const Command& program, const std::vector<Command>& commands)
{
    std::string branches =
        fmt::format("    '') words='{} {}';;\n", commandNames(commands), optionWords(program));
    for (const Command& command : commands) branches += bashCommand(command);
    return fmt::format(R"(# Completion of the command kvx for bash.
_kvx_files() {{
  local IFS=$'\n' # names may contain blanks
  compopt -o filenames 2>/dev/null
  COMPREPLY=($(compgen -f -- "$current"))
}}

_kvx_words() {{
  case $command in
{}  esac
}}

_kvx() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}} command= words= i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${{COMP_WORDS[i]}} in
      -*) ;;
      *) command=${{COMP_WORDS[i]}}; break;;
    esac
  done
  COMPREPLY=()
  _kvx_words
  if [ -n "$words" ]; then COMPREPLY=($(compgen -W "$words" -- "$current")); fi
}}
complete -F _kvx kvx
)",
                       branches);
}

// ---- zsh ----

namespace {

std::string zshAction(const Option& option)
{
    if (isFile(option)) return "_files";
    return option.target.choices.empty() ? " " : fmt::format("({})", fmt::join(option.target.choices, " "));
}

/// The words that declare an option or an argument to the function `_arguments`.
std::string zshOption(const Option& option)
{
    if (option.isArgument()) {
        const char* const count = option.target.kind == Kind::repeated ? "*" : "";
        return fmt::format("'{}:{}:{}'", count, option.names, zshAction(option));
    }
    std::string declared;
    for (const std::string& name : namesOf(option)) {
        const char* const optional = option.target.kind == Kind::optionalValue ? "::" : ":";
        const std::string value =
            hasValue(option) ? fmt::format("{}{}:{}", optional, shortText(option.value), zshAction(option))
                             : "";
        declared +=
            fmt::format("{}'{}[{}]{}'", declared.empty() ? "" : " ", name, shortText(option.help), value);
    }
    return declared;
}

std::string zshOptions(const Command& command)
{
    std::string declared;
    forEachOption(command, [&](const Option& option) { declared += " \\\n          " + zshOption(option); });
    return declared;
}

} // namespace

std::string zshCompletion(const Command& program, const std::vector<Command>& commands)
{
    std::string names, branches;
    for (const Command& command : commands) {
        names += fmt::format("        '{}:{}'\n", command.name, shortText(command.summary));
        branches += fmt::format("        {}) _arguments{};;\n", command.name, zshOptions(command));
    }
    return fmt::format(R"(#compdef kvx
# Completion of the command kvx for zsh.
_kvx() {{
  local line state
  local -a names
  _arguments -C '1:command:->command' '*::argument:->arguments'{}
  case $state in
    command)
      names=(
{}      )
      _describe command names;;
    arguments)
      case $line[1] in
{}      esac;;
  esac
}}
_kvx "$@"
)",
                       zshOptions(program), names, branches);
}

// ---- fish ----

namespace {

std::string fishOption(const std::string& condition, const Option& option)
{
    if (option.isArgument()) return {};
    std::string line = fmt::format("complete -c kvx -n '{}'", condition);
    for (const std::string& name : namesOf(option))
        line += name.rfind("--", 0) == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1);
    if (hasValue(option) && option.target.kind != Kind::optionalValue)
        line += isFile(option) ? " -r -F" : " -x";
    if (!option.target.choices.empty())
        line += fmt::format(" -a '{}'", fmt::join(option.target.choices, " "));
    return fmt::format("{} -d '{}'\n", line, shortText(option.help));
}

} // namespace

std::string fishCompletion(const Command& program, const std::vector<Command>& commands)
{
    std::string text = "# Completion of the command kvx for fish.\ncomplete -c kvx -f\n";
    const auto addOptions = [&text](const Command& command, const std::string& condition) {
        forEachOption(command, [&](const Option& option) { text += fishOption(condition, option); });
    };
    addOptions(program, "__fish_use_subcommand");
    for (const Command& command : commands)
        text += fmt::format("complete -c kvx -n __fish_use_subcommand -a {} -d '{}'\n", command.name,
                            shortText(command.summary));
    for (const Command& command : commands) {
        const std::string condition = "__fish_seen_subcommand_from " + command.name;
        addOptions(command, condition);
        if (takesFiles(command)) text += fmt::format("complete -c kvx -n '{}' -F\n", condition);
        if (const std::string words = argumentWords(command); !words.empty())
            text += fmt::format("complete -c kvx -n '{}' -a '{}'\n", condition, words);
    }
    return text;
}

} // namespace kvx
