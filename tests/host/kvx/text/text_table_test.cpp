// Columns that fit a terminal.
#include "host/kvx/text/text_table.h"

#include <gtest/gtest.h>

namespace {

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

TEST(TextTable, IsAsWideAsItComesWhereThereIsNoTerminal)
{
    EXPECT_EQ(kvx::layOutTable(columns, rows, 0), "no.  name           maker      rates        state\n"
                                                  "  0  Desk Speakers  Maker One  44100 48000  idle\n"
                                                  " 10  Mike                      8000\n");
}

TEST(TextTable, FitsAnyWidthFirstByCuttingThenByMovingColumnsBelow)
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
         "it just fits"},
        {48,
         "no.  name          maker      rates        state\n"
         "  0  Desk Speake\xE2\x80\xA6  Maker One  44100 48000  idle\n"
         " 10  Mike                     8000\n",
         "the widest that may be cut gives way"},
        {38,
         "no.  name    maker  rates        state\n"
         "  0  Desk \xE2\x80\xA6  Make\xE2\x80\xA6  44100 48000  idle\n"
         " 10  Mike           8000\n",
         "all are cut to their least, or to their titles"},
        {36,
         "no.  name         rates        state\n"
         "  0  Desk Speak\xE2\x80\xA6  44100 48000  idle\n"
         "     maker Maker One\n"
         " 10  Mike         8000\n",
         "then the first to leave goes below its row, where it stands whole; an empty cell does not"},
        {24,
         "no.  name          state\n"
         "  0  Desk Speake\xE2\x80\xA6  idle\n"
         "     maker Maker One,\n"
         "     rates 44100 48000\n"
         " 10  Mike\n"
         "     rates 8000\n",
         "then the next, a line of its own where the line is full"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.width << ": " << fact.why);
        const std::string text = kvx::layOutTable(columns, rows, fact.width);
        EXPECT_EQ(text, fact.text);
    }
}

TEST(TextTable, NoLineIsWiderThanTheTerminal)
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

TEST(TextTable, MeasuresWhatTheTerminalShows)
{
    EXPECT_EQ(kvx::displayWidth(""), 0u);
    EXPECT_EQ(kvx::displayWidth("caf\xC3\xA9"), 4u) << "two bytes, one place";
    EXPECT_EQ(kvx::displayWidth("\xE9\x9F\xB3\xE5\xA3\xB0"), 4u) << "wide characters take two";
    EXPECT_EQ(kvx::displayWidth("e\xCC\x81"), 1u) << "a combining mark takes none";
    EXPECT_EQ(kvx::displayWidth("\xFF"), 1u) << "a wrong byte is shown as something";
}

TEST(TextTable, CutsBetweenCharacters)
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

TEST(TextTable, HasTitlesAlone)
{
    EXPECT_EQ(kvx::layOutTable(columns, {}, 0), "no.  name  maker  rates  state\n");
}

} // namespace
