// Text that is broken into lines.
#include "host/kvx/text/wrapped_text.h"

#include <gtest/gtest.h>

namespace {

using kvx::wrapText;

TEST(WrappedText, BreaksBetweenWords)
{
    EXPECT_EQ(wrapText("one two three", 7), "one two\nthree\n");
    EXPECT_EQ(wrapText("one two three", 13), "one two three\n");
    EXPECT_EQ(wrapText("one two three", 12), "one two\nthree\n");
    EXPECT_EQ(wrapText("", 10), "\n");
}

TEST(WrappedText, GivesALongWordALine)
{
    EXPECT_EQ(wrapText("a seventeenletters b", 5), "a\nseventeenletters\nb\n");
}

TEST(WrappedText, IndentsTheLaterLines)
{
    EXPECT_EQ(wrapText("one two three", 9, 2), "one two\n  three\n");
    EXPECT_EQ(wrapText("one two three", 9, 2, 4), "one\n  two\n  three\n");
}

TEST(WrappedText, CountsTerminalColumns)
{
    EXPECT_EQ(wrapText("\xC3\xA9\xC3\xA9 \xC3\xA9", 4), "\xC3\xA9\xC3\xA9 \xC3\xA9\n");
    EXPECT_EQ(wrapText("\xE9\x9F\xB3 x", 3), "\xE9\x9F\xB3\nx\n") << "a wide character takes two columns";
}

} // namespace
