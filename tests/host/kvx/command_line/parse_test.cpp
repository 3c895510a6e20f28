// The command line, read into the targets of the options.
#include "host/kvx/command_line/parse.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace kvx;

struct Values {
    std::string file, mode = "high";
    std::vector<std::string> more;
    double gain = 0, seconds = 0;
    std::optional<double> rate;
    bool isLoud = false, isQuiet = false, isVerbose = false, isVersionWanted = false;
    int checks = 0;
};

/// A program with two commands whose options set `values`.
struct Program {
    Values values;
    Command program = {"", "", "COMMAND", "kvx {}"};
    std::vector<Command> commands = {{"sing", "", "", "kvx sing {}"}, {"string", "", "", "kvx string {}"}};

    Program()
    {
        const OptionGroup help = {"General",
                                  {{"-h,--help", "", {Target::Kind::flag, {}}, "", "", "", ""},
                                   {"--version", "", flag(values.isVersionWanted), "", "", "", ""}}};
        program.groups = {help, {"", {{"--verbose", "", flag(values.isVerbose), "", "", "", ""}}}};
        commands[0].groups = {
            help,
            {"",
             {{"FILE", "", text(values.file), "", "", "", "", "", "", true},
              {"MORE", "", texts(values.more), "", "", "", ""},
              {"-g,--gain", "DB", number(values.gain, -6, 6), "", "dB", "0", ""},
              {"--rate", "FACTOR", number(values.rate, 0.5, 2), "", "", "1", ""},
              {"--mode", "MODE", choice<std::string>(values.mode, {{"high", "h"}, {"low", "l"}}), "", "", "",
               ""},
              {"--every", "SECONDS", orDefault(number(values.seconds, 1, 5)), "", "", "3", "", "--loud"},
              {"--loud", "", flag(values.isLoud), "", "", "", "", "", "--quiet"},
              {"--quiet", "", flag(values.isQuiet), "", "", "", ""}}}};
        commands[0].check = [this] {
            ++values.checks;
            if (values.file == "bad") throw WrongUsage("FILE is bad");
        };
        commands[1].groups = {help};
    }
    Choice parse(const std::vector<const char*>& words)
    {
        std::vector<const char*> arguments = {"kvx"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        return kvx::parse(program, commands, int(arguments.size()), arguments.data());
    }
};

TEST(Parse, VersionNeedsNoOtherArgument)
{
    for (const std::vector<const char*>& words :
         {std::vector<const char*>{"--version"}, {"--version", "sing"}, {"sing", "--version"}}) {
        Program p;
        EXPECT_EQ(p.parse(words).command, words.size() == 1 ? &p.program : &p.commands[0]);
        EXPECT_TRUE(p.values.isVersionWanted);
        EXPECT_EQ(p.values.checks, 0);
    }
}

TEST(Parse, StoresEveryKindOfValue)
{
    Program p;
    const Choice choice = p.parse({"--verbose", "sing", "a.wav", "-g", "-2.5", "--mode", "low", "--loud",
                                   "b.wav", "--rate=2", "--every", "2", "sing"});
    EXPECT_EQ(choice.command, &p.commands[0]);
    EXPECT_FALSE(choice.isHelpWanted);
    EXPECT_EQ(p.values.file, "a.wav");
    EXPECT_EQ(p.values.more, (std::vector<std::string>{"b.wav", "sing"}))
        << "a command's name is an argument too";
    EXPECT_EQ(p.values.gain, -2.5);
    EXPECT_EQ(p.values.rate, 2);
    EXPECT_EQ(p.values.mode, "l");
    EXPECT_EQ(p.values.seconds, 2);
    EXPECT_TRUE(p.values.isLoud && p.values.isVerbose);
    EXPECT_FALSE(p.values.isQuiet);
    EXPECT_EQ(p.values.checks, 1);
}

TEST(Parse, ReadsArgumentsThatBeginWithADashAfterTwoDashes)
{
    Program p;
    p.parse({"sing", "--loud", "--", "-odd.wav", "--quiet"});
    EXPECT_EQ(p.values.file, "-odd.wav");
    EXPECT_EQ(p.values.more, std::vector<std::string>{"--quiet"});
    EXPECT_TRUE(p.values.isLoud);
    EXPECT_FALSE(p.values.isQuiet);
}

TEST(Parse, KeepsTheValuesOfOptionsThatAreNotGiven)
{
    Program p;
    p.parse({"sing", "a.wav"});
    EXPECT_EQ(p.values.mode, "high");
    EXPECT_EQ(p.values.rate, std::nullopt);
    EXPECT_EQ(p.values.seconds, 0);
}

TEST(Parse, UsesTheDefaultForAnOmittedValue)
{
    Program p;
    p.parse({"sing", "a.wav", "--loud", "--every"});
    EXPECT_EQ(p.values.seconds, 3);
}

TEST(Parse, HelpWinsOverWrongArguments)
{
    for (const std::vector<const char*>& words :
         std::vector<std::vector<const char*>>{{"sing", "--help"},
                                               {"sing", "-h", "--no-such", "x", "y"},
                                               {"sing", "--gain", "much", "--help"},
                                               {"sing", "--quiet", "--loud", "bad", "--help"}}) {
        Program p;
        const Choice choice = p.parse(words);
        EXPECT_TRUE(choice.isHelpWanted);
        EXPECT_EQ(choice.command, &p.commands[0]);
        EXPECT_EQ(p.values.checks, 0);
    }
    Program p;
    EXPECT_EQ(p.parse({"--help"}).command, &p.program);
}

TEST(Parse, NamesTheProgramWithoutACommand)
{
    Program p;
    EXPECT_EQ(p.parse({"--verbose"}).command, &p.program);
    EXPECT_TRUE(p.values.isVerbose);
}

TEST(Parse, RefusesWrongUsageByName)
{
    const struct {
        std::vector<const char*> words;
        const char* text;
    } facts[] = {
        {{}, "a command is required"},
        {{"strin"}, "there is no command strin (did you mean string?)"},
        {{"dance"}, "there is no command dance"},
        {{"--verbos"}, "there is no option --verbos (did you mean --verbose?)"},
        {{"sing"}, "FILE is required"},
        {{"sing", "--lodu"}, "there is no option --lodu (did you mean --loud?)"},
        {{"sing", "a", "--rat=2"}, "there is no option --rat=2 (did you mean --rate?)"},
        {{"sing", "a", "--g"}, "there is no option --g (did you mean --gain?)"},
        {{"sing", "a", "--l", "2"}, "there is no option --l (did you mean --loud?)"},
        {{"sing", "a", "--fast", "2"}, "there is no option --fast"},
        {{"string", "x"}, "x is one argument too many"},
        {{"sing", "a", "--gain"}, "--gain takes exactly one value"},
        {{"sing", "a", "--rate", "1", "--rate", "2"}, "--rate takes exactly one value"},
        {{"sing", "a", "--gain", "7"}, "--gain: 7 is not a number from -6 to 6"},
        {{"sing", "a", "--gain", "nan"}, "--gain: nan is not a number from -6 to 6"},
        {{"sing", "a", "--gain", "3dB"}, "--gain: 3dB is not a number from -6 to 6"},
        {{"sing", "a", "--mode", "mid"}, "--mode: mid is not one of high, low"},
        {{"sing", "a", "--every"}, "--every requires --loud"},
        {{"sing", "a", "--loud", "--quiet"}, "--loud excludes --quiet"},
        {{"sing", "bad"}, "FILE is bad"},
    };
    for (const auto& fact : facts) {
        Program p;
        try {
            p.parse(fact.words);
            ADD_FAILURE() << fact.text;
        } catch (const WrongUsage& error) {
            EXPECT_EQ(error.what(), fact.text + std::string("; --help lists the arguments"));
        }
    }
}

} // namespace
