// The table of all commands: each row states what help needs.
#include "host/kvx/commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

namespace {

using namespace kvx;

/// Call `use` for each row of each command and of the program.
void forEachOption(const std::function<void(const Command&, const Option&)>& use)
{
    std::vector<Command> commands = allCommands();
    commands.push_back(program());
    for (const Command& command : commands)
        for (const OptionGroup& group : command.groups)
            for (const Option& option : group.options) {
                SCOPED_TRACE("kvx " + command.name + " " + option.names);
                use(command, option);
            }
}

bool hasWord(const std::string& line, const std::string& word)
{
    return (" " + line + " ").find(" " + word + " ") != std::string::npos;
}

bool hasOption(const Command& command, const std::string& longName)
{
    for (const OptionGroup& group : command.groups)
        for (const Option& option : group.options)
            if (option.longName() == longName) return true;
    return false;
}

TEST(Commands, EachOptionHasHelpAndAnExampleThatUsesIt)
{
    forEachOption([](const Command& command, const Option& option) {
        EXPECT_FALSE(option.help.empty());
        EXPECT_NE(option.help.back(), '.');
        const std::string example = exampleOf(command, option);
        EXPECT_EQ(example.rfind("kvx " + command.name, 0), 0u) << example;
        if (!option.isArgument())
            EXPECT_TRUE(hasWord(example, option.longName()) ||
                        hasWord(example, option.names.substr(0, option.names.find(','))))
                << example;
    });
}

TEST(Commands, EachNumberHasUnits)
{
    forEachOption([](const Command&, const Option& option) {
        EXPECT_TRUE(option.target.range.empty() || !option.units.empty());
        EXPECT_EQ(option.target.kind == Target::Kind::flag, option.value.empty() && !option.isArgument());
    });
}

TEST(Commands, OptionsNameExistingOptionsOfTheirCommand)
{
    forEachOption([](const Command& command, const Option& option) {
        for (const std::string& name : {option.needs, option.excludes})
            EXPECT_TRUE(name.empty() || hasOption(command, name)) << name;
    });
}

TEST(Commands, HaveDifferentNamesAndAnExampleFrame)
{
    std::set<std::string> names;
    for (const Command& command : allCommands()) {
        EXPECT_TRUE(names.insert(command.name).second) << command.name;
        EXPECT_EQ(command.exampleFrame.rfind("kvx " + command.name + " {}", 0), 0u) << command.exampleFrame;
        EXPECT_FALSE(command.summary.empty());
        EXPECT_TRUE(command.run);
    }
}

TEST(Commands, HaveDifferentOptionNames)
{
    for (const Command& command : allCommands()) {
        std::set<std::string> names;
        for (const OptionGroup& group : command.groups)
            for (const Option& option : group.options)
                EXPECT_TRUE(names.insert(option.longName()).second) << command.name << " " << option.names;
    }
}

} // namespace
