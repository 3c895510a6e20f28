// Words that are quoted for the shell.
#include "host/kvx/text/shell_text.h"
#include "tests/support/child_process.h"

#include <gtest/gtest.h>

namespace {

using kvx::quotedForShell;

TEST(QuotedForShell, LeavesPlainWordsUnchanged)
{
    for (const char* word : {"song.wav", "/a/b-c_d.wav", "rate=48000", "1,0", "0:02.5", "kvx@home",
                             "K\xC3\xBC"
                             "che"})
        EXPECT_EQ(quotedForShell(word), word);
    EXPECT_EQ(quotedForShell("my song.wav"), "'my song.wav'");
    EXPECT_EQ(quotedForShell("it's"), "'it'\\''s'");
    EXPECT_EQ(quotedForShell(""), "''");
}

TEST(QuotedForShell, ReachesAProgramUnchanged)
{
    for (const std::string word :
         {"a b", "a\tb", "a\nb", "$HOME", "`id`", "a;b",   "a&b", "~",   "*", "[a]", "\\",
          "\"",  "'",    "#a",   "!!",    "(a)",  "{a,b}", "<a>", "a|b", "",  "a=b"})
        EXPECT_EQ(support::runChild({"sh", "-c", "printf %s " + quotedForShell(word)}).out, word) << word;
}

} // namespace
