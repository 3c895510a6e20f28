// Tests of the functions that clean, cut and lay out text for a terminal.
#include "host/kvx/text/terminal_text.h"

#include <gtest/gtest.h>

#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

TEST(PlainText, ReplacesControlCharactersAndInvalidBytes)
{
    const struct {
        std::string text, plain;
    } facts[] = {
        {"Desk Speakers", "Desk Speakers"},
        {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8E\xB5", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8E\xB5"},
        {"a\x1B[2Jb", "a?[2Jb"},
        {"a\nb\tc\x7F", "a?b?c?"},
        {"\xC2\x9B", "?"},
        {"\xFF\xC3", "??"},
        {"\xC3(", "?("},
        {"", ""},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::plainText(fact.text), fact.plain);
}

TEST(AsciiText, HasOneColumnPerCharacter)
{
    const struct {
        std::string text, ascii;
    } facts[] = {
        {"song.wav", "song.wav"},
        {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8E\xB5", "caf? ? ?"},
        {"a\x1B[2J\xFF", "a?[2J?"},
        {"", ""},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::asciiText(fact.text), fact.ascii);
}

using kvx::TableColumn;

const std::vector<TableColumn> columns = {
    {"no.", TableColumn::right, 0, 0},  {"name", TableColumn::left, 6, 0},
    {"maker", TableColumn::left, 4, 2}, {"rates", TableColumn::left, 0, 1},
    {"state", TableColumn::left, 0, 0},
};
const std::vector<std::vector<std::string>> rows = {
    {"0", "Desk Speakers", "Maker One", "44100 48000", "idle"},
    {"10", "Mike", "", "8000", ""},
};

TEST(TextTable, HasItsFullWidthWithoutATerminal)
{
    EXPECT_EQ(kvx::layOutTable(columns, rows, 0), "no.  name           maker      rates        state\n"
                                                  "  0  Desk Speakers  Maker One  44100 48000  idle\n"
                                                  " 10  Mike                      8000\n");
}

TEST(TextTable, CutsCellsThenMovesColumnsBelowTheRowToFit)
{
    const struct {
        std::size_t width;
        const char* text;
        const char* why;
    } facts[] = {
        {49,
         "no.  name           maker      rates        state\n"
         "  0  Desk Speakers  Maker One  44100 48000  idle\n"
         " 10  Mike                      8000\n",
         "the table just fits"},
        {48,
         "no.  name          maker      rates        state\n"
         "  0  Desk Speake\xE2\x80\xA6  Maker One  44100 48000  idle\n"
         " 10  Mike                     8000\n",
         "the widest cell that may be cut is cut"},
        {38,
         "no.  name    maker  rates        state\n"
         "  0  Desk \xE2\x80\xA6  Make\xE2\x80\xA6  44100 48000  idle\n"
         " 10  Mike           8000\n",
         "all cells are cut to their minimum widths or their titles"},
        {36,
         "no.  name         rates        state\n"
         "  0  Desk Speak\xE2\x80\xA6  44100 48000  idle\n"
         "     maker Maker One\n"
         " 10  Mike         8000\n",
         "the first column to move is uncut below its row; an empty cell is left out"},
        {24,
         "no.  name          state\n"
         "  0  Desk Speake\xE2\x80\xA6  idle\n"
         "     maker Maker One,\n"
         "     rates 44100 48000\n"
         " 10  Mike\n"
         "     rates 8000\n",
         "the second moved column takes a line, because the first line is full"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.width << ": " << fact.why);
        const std::string text = kvx::layOutTable(columns, rows, fact.width);
        EXPECT_EQ(text, fact.text);
    }
}

TEST(TextTable, HasNoLineWiderThanTheTerminal)
{
    for (std::size_t width = 18; width <= 60; ++width) {
        std::string line;
        for (char c : kvx::layOutTable(columns, rows, width)) {
            if (c != '\n') {
                line += c;
                continue;
            }
            EXPECT_LE(kvx::displayWidth(line), width) << line;
            line.clear();
        }
    }
}

TEST(DisplayWidth, CountsTerminalColumns)
{
    EXPECT_EQ(kvx::displayWidth(""), 0u);
    EXPECT_EQ(kvx::displayWidth("caf\xC3\xA9"), 4u) << "a character of two bytes takes one column";
    EXPECT_EQ(kvx::displayWidth("\xE9\x9F\xB3\xE5\xA3\xB0"), 4u) << "a wide character takes two columns";
    EXPECT_EQ(kvx::displayWidth("e\xCC\x81"), 1u) << "a combining mark takes no column";
    EXPECT_EQ(kvx::displayWidth("\xFF"), 1u) << "an invalid byte takes one column";
}

TEST(CutToWidth, CutsBetweenCharacters)
{
    const struct {
        const char* text;
        std::size_t width;
        const char* cut;
    } facts[] = {
        {"abc", 3, "abc"},
        {"abcd", 3, "ab\xE2\x80\xA6"},
        {"abcd", 1, "\xE2\x80\xA6"},
        {"abcd", 0, ""},
        {"", 0, ""},
        {"\xC3\xA9\xC3\xA9\xC3\xA9", 2, "\xC3\xA9\xE2\x80\xA6"},
        {"\xE9\x9F\xB3\xE5\xA3\xB0", 3, "\xE9\x9F\xB3\xE2\x80\xA6"},
        {"\xE9\x9F\xB3\xE5\xA3\xB0", 2, "\xE2\x80\xA6"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::cutToWidth(fact.text, fact.width), fact.cut);
}

TEST(TextTable, WithoutRowsHasItsTitles)
{
    EXPECT_EQ(kvx::layOutTable(columns, {}, 0), "no.  name  maker  rates  state\n");
}

TEST(TerminalWidth, FollowsTheTerminal)
{
    int outer = -1, inner = -1;
    winsize size = {24, 33, 0, 0};
    ASSERT_EQ(openpty(&outer, &inner, nullptr, nullptr, &size), 0);
    EXPECT_EQ(kvx::terminalWidth(inner), 33u);
    size.ws_col = 120;
    ioctl(outer, TIOCSWINSZ, &size);
    EXPECT_EQ(kvx::terminalWidth(inner), 120u);
    size.ws_col = 0;
    ioctl(outer, TIOCSWINSZ, &size);
    EXPECT_EQ(kvx::terminalWidth(inner), 0u) << "the terminal reports no width";
    close(inner);
    close(outer);
    EXPECT_EQ(kvx::terminalWidth(-1), 0u) << "the descriptor is not a terminal";
}

} // namespace
