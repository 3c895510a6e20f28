// Commands and options as records. One row declares all of an option: how the command line reads it, and what
// help, manual pages and completions show of it.
//
// All functions: [main].
#pragma once

#include "host/kvx/library/library.h"
#include "host/kvx/text/failure.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kvx {

/// Where the value of an option goes. The functions below make targets.
struct Target {
    enum class Kind {
        flag,          ///< the option has no value
        single,        ///< one value
        optionalValue, ///< one value or none; without a value, `read` gets the default
        repeated       ///< one value or more
    };
    Kind kind;
    /// Read a value. `option` is the name of the option, for messages.
    /// Errors  throws WrongUsage.
    std::function<void(const std::string& option, const std::string& text)> read;
    std::string range = {};                ///< accepted numbers, such as "0 to 1"; empty: other values
    std::vector<std::string> choices = {}; ///< words that help and completions name; may be empty
};

/// One option, or one argument that is not an option.
struct Option {
    std::string names; ///< "--rate", "-r,--recursive"; the name of an argument, "FILE"
    std::string value; ///< name of the value, "FACTOR"; empty for a flag or an argument
    Target target;
    std::string help;    ///< what the option does, without a full stop at the end
    std::string units;   ///< unit of the value, such as "cents"; empty if the value is not a number
    std::string initial; ///< the value without the option, "1"; empty: none
    std::string example; ///< arguments for Command::exampleFrame, or a command line that begins with "kvx "
    std::string needs = {};    ///< the option that must also be given, "--watch"
    std::string excludes = {}; ///< the option that must not be given as well
    bool isRequired = false;

    bool isArgument() const { return names.front() != '-'; }
    std::string longName() const { return names.substr(names.find(',') + 1); } ///< "--recursive"
};

/// Options under one title of the help.
struct OptionGroup {
    std::string title; ///< a noun, "Sound"
    std::vector<Option> options;
};

struct Command {
    std::string name;                     ///< "play"; empty: the program itself
    std::string summary;                  ///< one sentence without a full stop
    std::string arguments;                ///< the arguments in the usage line, "FILE..."
    std::string exampleFrame;             ///< a command line with "{}" for the option, "kvx play {} song.wav"
    std::vector<OptionGroup> groups = {}; ///< arguments and options
    std::vector<std::string> notes = {};  ///< paragraphs after the options
    const LibraryOptions* library = nullptr; ///< owned by `run`; null if the command loads no library
    /// Check the options that depend on each other; may be empty.
    /// Errors  throws WrongUsage, to which the advice to read --help is added.
    std::function<void()> check = {};
    /// Run the command.
    /// Returns  the exit code.
    /// Errors   throws Failure and other standard exceptions.
    std::function<int()> run = {};
};

/// Call `use` for each argument and option of a command, in the order of its groups.
template <class Use>
void forEachOption(const Command& command, Use use)
{
    for (const OptionGroup& group : command.groups)
        for (const Option& option : group.options) use(option);
}

/// The command line of an option's example: "kvx play --rate 1.5 song.wav"; "" without an example.
std::string exampleOf(const Command& command, const Option& option);

/// Format what help adds to the text of an option: "-1 to 1, default 0"; "" if there is nothing to add.
std::string formatValues(const Option& option);

// ---- targets ----

Target flag(bool& target);
Target text(std::string& target);
Target texts(std::vector<std::string>& target); ///< any number of values

/// Numbers from `low` to `high`, which may be equal to the limits.
Target number(double& target, double low, double high);
Target number(std::optional<double>& target, double low, double high);

/// Times in seconds from `low` to `high`, in the forms of readTime().
Target time(std::optional<double>& target, double low, double high);

/// Whole numbers from `low` to `high`, which may be equal to the limits.
Target number(int& target, int low, int high);

/// A target like `other` whose value may be left out.
Target orDefault(Target other);

/// Texts that a function reads. The function throws WrongUsage with the name of the option.
Target reading(std::function<void(const std::string& text)> read);

/// A target like `other` that also names words for help and completions. The target reads other texts, too.
Target withWords(Target other, std::vector<std::string> words);

/// Refuse a text that is not one of the choices.
/// Errors  throws WrongUsage.
void checkChoice(const std::string& option, const std::string& text, const std::vector<std::string>& choices);

/// Words, each with the value that it stands for.
template <class T>
Target choice(T& target, const std::vector<std::pair<std::string, T>>& values)
{
    Target made = {Target::Kind::single, {}};
    for (const auto& each : values) made.choices.push_back(each.first);
    made.read = [&target, values, choices = made.choices](const std::string& option,
                                                          const std::string& text) {
        checkChoice(option, text, choices);
        for (const auto& [word, value] : values)
            if (text == word) target = value;
    };
    return made;
}

} // namespace kvx
