#include "host/kvx/command_line/command.h"

#include "host/kvx/text/number_text.h"
#include "host/kvx/text/time_text.h"

#include <fmt/format.h>

namespace kvx {
namespace {

/// A target for `assign`, a function that stores a number from `low` to `high`.
Target numberTarget(double low, double high, std::function<void(double)> assign)
{
    const std::string range = fmt::format("{} to {}", low, high);
    const auto read = [low, high, range, assign](const std::string& option, const std::string& text) {
        const std::optional<double> value = readReal(text);
        if (!value || *value < low || *value > high)
            throw WrongUsage(fmt::format("{}: {} is not a number from {}", option, text, range));
        assign(*value);
    };
    return {Target::Kind::single, read, range};
}

} // namespace

std::string exampleOf(const Command& command, const Option& option)
{
    if (option.example.empty() || option.example.rfind("kvx ", 0) == 0) return option.example;
    std::string line = command.exampleFrame;
    return line.replace(line.find("{}"), 2, option.example);
}

std::string formatValues(const Option& option)
{
    std::string text = fmt::format("{}", fmt::join(option.target.choices, ", "));
    for (const std::string& word : {option.target.range, option.units})
        if (!word.empty()) text += (text.empty() ? "" : " ") + word;
    if (!option.initial.empty()) text += (text.empty() ? "default " : "; default ") + option.initial;
    return text;
}

Target flag(bool& target)
{
    return {Target::Kind::flag, [&target](const std::string&, const std::string&) { target = true; }};
}

Target text(std::string& target)
{
    return reading([&target](const std::string& value) { target = value; });
}

Target texts(std::vector<std::string>& target)
{
    Target made = reading([&target](const std::string& value) { target.push_back(value); });
    made.kind = Target::Kind::repeated;
    return made;
}

Target number(double& target, double low, double high)
{
    return numberTarget(low, high, [&target](double value) { target = value; });
}

Target number(std::optional<double>& target, double low, double high)
{
    return numberTarget(low, high, [&target](double value) { target = value; });
}

Target time(std::optional<double>& target, double low, double high)
{
    const auto read = [low, high, &target](const std::string& option, const std::string& text) {
        target = readTime(text);
        if (!target || *target < low || *target > high)
            throw WrongUsage(
                fmt::format("{}: {} is not a time from {} to {} seconds; write {}, such as 90, 1:30.5 or "
                            "0:01:30",
                            option, text, low, high, timeUnits));
    };
    return {Target::Kind::single, read};
}

Target number(int& target, int low, int high)
{
    const std::string range = fmt::format("{} to {}", low, high);
    const auto read = [&target, low, high, range](const std::string& option, const std::string& text) {
        const std::optional<int> value = readDecimal<int>(text);
        if (!value || *value < low || *value > high)
            throw WrongUsage(fmt::format("{}: {} is not a whole number from {}", option, text, range));
        target = *value;
    };
    return {Target::Kind::single, read, range};
}

Target orDefault(Target other)
{
    other.kind = Target::Kind::optionalValue;
    return other;
}

Target reading(std::function<void(const std::string& text)> read)
{
    return {Target::Kind::single,
            [read = std::move(read)](const std::string&, const std::string& text) { read(text); }};
}

Target withWords(Target other, std::vector<std::string> words)
{
    other.choices = std::move(words);
    return other;
}

void checkChoice(const std::string& option, const std::string& text, const std::vector<std::string>& choices)
{
    for (const std::string& each : choices)
        if (text == each) return;
    throw WrongUsage(fmt::format("{}: {} is not one of {}", option, text, fmt::join(choices, ", ")));
}

} // namespace kvx
