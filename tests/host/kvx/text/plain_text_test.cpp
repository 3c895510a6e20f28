// Names from outside.
#include "host/kvx/text/plain_text.h"

#include <gtest/gtest.h>

namespace {

TEST(PlainText, KeepsControlCharactersFromTheTerminal)
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

TEST(PlainText, IsOneColumnACharacterWhereColumnsCount)
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

} // namespace
