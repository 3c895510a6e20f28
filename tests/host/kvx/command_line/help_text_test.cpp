// The help of a command.
#include "host/kvx/command_line/help_text.h"

#include <gtest/gtest.h>

namespace {

using namespace kvx;

struct Values {
    double gain = 0, seconds = 0;
    bool isLoud = false;
    std::string file, mode;
};

Command makeCommand(Values& values)
{
    Command command = {"sing", "Sing a song", "FILE", "kvx sing {} song.wav"};
    command.groups = {
        {"Arguments", {{"FILE", "", text(values.file), "The song to sing", "", "", "kvx sing song.wav"}}},
        {"Sound",
         {{"-g,--gain", "DB", number(values.gain, -6, 6), "Gain", "dB", "0", "--gain 3"},
          {"--mode", "MODE", choice(values.mode, {{"high", "h"}, {"low", "l"}}), "The voice", "", "high",
           "--mode low"},
          {"--every-so-and-so-often", "SECONDS", orDefault(number(values.seconds, 1, 2)),
           "Repeat the song after SECONDS", "seconds", "1", ""},
          {"--loud", "", flag(values.isLoud), "Sing so loud that the text takes two lines of the help", "",
           "", "kvx sing --loud"}}},
    };
    command.notes = {"A note of the author."};
    return command;
}

TEST(HelpText, ShowsRangeUnitsDefaultAndExampleOfEachOption)
{
    Values values;
    EXPECT_EQ(helpText(makeCommand(values), {}, 60),
              "Sing a song\n"
              "\n"
              "Usage: kvx sing [OPTIONS] FILE\n"
              "\n"
              "Arguments\n"
              "  FILE                  The song to sing\n"
              "                        Example: kvx sing song.wav\n"
              "\n"
              "Sound\n"
              "  -g, --gain DB         Gain (-6 to 6 dB; default 0)\n"
              "                        Example: kvx sing --gain 3 song.wav\n"
              "  --mode MODE           The voice (high, low; default high)\n"
              "                        Example: kvx sing --mode low song.wav\n"
              "  --every-so-and-so-often [SECONDS]\n"
              "                        Repeat the song after SECONDS (1 to\n"
              "                        2 seconds; default 1)\n"
              "  --loud                Sing so loud that the text takes two\n"
              "                        lines of the help\n"
              "                        Example: kvx sing --loud\n"
              "\n"
              "A note of the author.\n");
}

TEST(HelpText, OfTheProgramListsTheCommands)
{
    Values values;
    const Command program = {"", "Does all", "COMMAND", "kvx {}"};
    EXPECT_EQ(helpText(program, {makeCommand(values)}, 60), "Does all\n"
                                                            "\n"
                                                            "Usage: kvx [OPTIONS] COMMAND\n"
                                                            "\n"
                                                            "Commands\n"
                                                            "  sing                  Sing a song\n");
}

} // namespace
