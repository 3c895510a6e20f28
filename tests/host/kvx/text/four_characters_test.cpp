// Codes as the user reads and writes them.
#include "host/kvx/text/four_characters.h"

#include <gtest/gtest.h>

namespace {

TEST(FourCharacters, ArePrintedHighestByteFirst)
{
    const struct {
        kvx::Code code;
        const char* text;
        const char* why;
    } facts[] = {
        {0x64657623, "'dev#'", "the first character is the highest byte"},
        {0x75696420, "'uid '", "a blank at the end is one of the four"},
        {0x2A2A2A2A, "'****'", "any printable character"},
        {0x7E7E7E7E, "'~~~~'", "the last that can be printed"},
        {0x7F7E7E7E, "0x7F7E7E7E", "and the first that cannot"},
        {0x20202020, "'    '", "blanks alone"},
        {0x20201F20, "0x20201F20", "a control character"},
        {0x27202020, "0x27202020", "a quote would end the quotes"},
        {0, "0x00000000", "zero is no text"},
        {0xFFFFFFFF, "0xFFFFFFFF", "nor is this"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::printCode(fact.code), fact.text) << fact.why;
    EXPECT_EQ(kvx::charactersOf(0x00FF41FF), std::string("\0\xFF"
                                                         "A\xFF",
                                                         4));
}

TEST(FourCharacters, AreReadWithOrWithoutQuotesAndFilledUp)
{
    const struct {
        const char* text;
        std::optional<kvx::Code> code;
        const char* why;
    } facts[] = {
        {"dev#", 0x64657623, "plain"},
        {"'dev#'", 0x64657623, "in quotes"},
        {"uid", 0x75696420, "filled up with blanks"},
        {"'uid '", 0x75696420, "or with its own"},
        {"x", 0x78202020, "one is enough"},
        {"", std::nullopt, "none is not"},
        {"''", 0x27272020, "empty quotes are two quotes"},
        {"'", 0x27202020, "one quote is a character"},
        {"dev##", std::nullopt, "five are too many"},
        {"'dev##'", std::nullopt, "also in quotes"},
        {"\xC3\xA9"
         "ab",
         0xC3A96162, "bytes, not letters"},
        {"1394", 0x31333934, "digits are characters"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::readCode(fact.text), fact.code) << fact.text << ": " << fact.why;
}

TEST(FourCharacters, NumbersAreReadToTheirLastBit)
{
    const struct {
        const char* text;
        std::optional<std::uint32_t> number;
    } facts[] = {
        {"0", 0u},
        {"4294967295", 0xFFFFFFFFu},
        {"4294967296", std::nullopt},
        {"0xFFFFFFFF", 0xFFFFFFFFu},
        {"0XfFfFfFfF", 0xFFFFFFFFu},
        {"0x100000000", std::nullopt},
        {"0x", std::nullopt},
        {"0xG", std::nullopt},
        {"", std::nullopt},
        {"-1", std::nullopt},
        {"+1", std::nullopt},
        {" 1", std::nullopt},
        {"1 ", std::nullopt},
        {"1.0", std::nullopt},
        {"010", 10u},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::readNumber(fact.text), fact.number) << fact.text;
}

TEST(FourCharacters, CodeOrNumberIsTold)
{
    const struct {
        const char* text;
        std::optional<kvx::Code> code;
        const char* why;
    } facts[] = {
        {"0x64657623", 0x64657623, "marked as a number"},
        {"0x1F", 0x1F, "so is this, though it has four characters"},
        {"1684370979", 0x64657623, "more than four digits"},
        {"1394", 0x31333934, "four digits are characters"},
        {"livn", 0x6C69766E, "characters"},
        {"kAudioDevicePropertyDeviceName", std::nullopt, "a name is neither"},
        {"0xyz", std::nullopt, "a number that is none"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::readCodeOrNumber(fact.text), fact.code) << fact.text << ": " << fact.why;
    for (kvx::Code code : {0u, 0x64657623u, 0x27202020u, 0xFFFFFFFFu, 0x75696420u})
        EXPECT_EQ(kvx::readCodeOrNumber(kvx::printCode(code)), code) << "what is printed is read";
}

} // namespace
