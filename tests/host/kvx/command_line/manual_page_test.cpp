// The manual page of a command.
#include "host/kvx/command_line/manual_page.h"

#include <gtest/gtest.h>

namespace {

using namespace kvx;

Command makeCommand(double& gain, std::string& file)
{
    Command command = {"sing", "Sing a song", "FILE", "kvx sing {} song.wav"};
    command.groups = {
        {"Arguments", {{"FILE", "", text(file), ".wav or C:\\x", "", "", "kvx sing 'my song.wav'"}}},
        {"Sound", {{"-g,--gain", "DB", orDefault(number(gain, -6, 6)), "See `kvx ~`", "dB", "0", ""}}},
    };
    command.notes = {"'A note.", "Another."};
    return command;
}

TEST(ManualPage, ShowsUsageOptionsAndNotes)
{
    double gain = 0;
    std::string file;
    EXPECT_EQ(manualPage(makeCommand(gain, file), {}), ".TH \"KVX\\-SING\" 1 \"\" \"KVX Audio\"\n"
                                                       ".SH \"NAME\"\n"
                                                       "kvx\\-sing \\- Sing a song\n"
                                                       ".SH \"SYNOPSIS\"\n"
                                                       "\\fBkvx sing\\fR [\\fIOPTIONS\\fR] FILE\n"
                                                       ".SH \"ARGUMENTS AND OPTIONS\"\n"
                                                       ".SS \"Arguments\"\n"
                                                       ".TP\n"
                                                       "\\fBFILE\\fR\n"
                                                       "\\&.wav or C:\\ex.\n"
                                                       ".br\n"
                                                       "Example:\n"
                                                       ".nh\n"
                                                       "\\fBkvx sing \\(aqmy song.wav\\(aq\\fR\n"
                                                       ".hy\n"
                                                       ".SS \"Sound\"\n"
                                                       ".TP\n"
                                                       "\\fB\\-g, \\-\\-gain\\fR \\fI[DB]\\fR\n"
                                                       "See \\(gakvx \\(ti\\(ga (\\-6 to 6 dB; default 0).\n"
                                                       ".SH \"NOTES\"\n"
                                                       ".PP\n"
                                                       "\\(aqA note.\n"
                                                       ".PP\n"
                                                       "Another.\n"
                                                       ".SH \"SEE ALSO\"\n"
                                                       ".BR kvx (1)\n");
}

TEST(ManualPage, OfTheProgramListsTheCommands)
{
    double gain = 0;
    std::string file;
    const Command program = {"", "Does all", "COMMAND", "kvx {}"};
    const std::string page = manualPage(program, {makeCommand(gain, file)});
    for (const char* part :
         {".TH \"KVX\" 1", "kvx \\- Does all\n", ".SH \"COMMANDS\"\n.TP\n\\fBsing\\fR\nSing a song.\n",
          ".SH \"SEE ALSO\"\n.BR kvx\\-sing (1)\n"})
        EXPECT_NE(page.find(part), std::string::npos) << part << page;
}

} // namespace
