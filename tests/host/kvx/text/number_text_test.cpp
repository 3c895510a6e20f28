// Tests of the functions that read and format numbers and bytes.
#include "host/kvx/text/number_text.h"

#include "host/kvx/text/failure.h"

#include <gtest/gtest.h>

namespace {

TEST(RealNumbers, AreReadFromAWholeTextOnly)
{
    const struct {
        const char* text;
        std::optional<double> number;
        const char* why;
    } facts[] = {
        {"0", 0.0, "a digit"},
        {"-0.5", -0.5, "a sign and a point"},
        {"+3", 3.0, "a plus sign"},
        {"1e3", 1000.0, "an exponent"},
        {".5", 0.5, "no digit before the point"},
        {"", std::nullopt, "an empty text"},
        {"+", std::nullopt, "a sign alone"},
        {"+-3", std::nullopt, "two signs"},
        {" 1", std::nullopt, "a blank before the number"},
        {"1x", std::nullopt, "a letter after the number"},
        {"1,5", std::nullopt, "a comma is not a decimal point"},
        {"nan", std::nullopt, "not a number"},
        {"inf", std::nullopt, "infinity"},
        {"1e999", std::nullopt, "out of range"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::readReal(fact.text), fact.number) << fact.why;
}

TEST(RealNumbers, AreReadFromListsWithoutGaps)
{
    using List = std::optional<std::vector<double>>;
    EXPECT_EQ(kvx::readReals("1"), List({1}));
    EXPECT_EQ(kvx::readReals("1,-2,3.5"), List({1, -2, 3.5}));
    for (const char* text : {"", ",", "1,", ",1", "1,,2", "1;2", "1, 2"})
        EXPECT_EQ(kvx::readReals(text), std::nullopt) << text;
}

TEST(WholeNumbers, AreReadUpTo32Bits)
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

TEST(Bytes, AreDumped16PerLine)
{
    EXPECT_EQ(kvx::dumpBytes(""), "");
    std::string bytes;
    for (int i = 0; i < 18; ++i) bytes += char(0x78 + i);
    EXPECT_EQ(kvx::dumpBytes(bytes),
              "0000  78 79 7a 7b 7c 7d 7e 7f 80 81 82 83 84 85 86 87  |xyz{|}~.........|\n"
              "0010  88 89                                            |..|");
}

TEST(Bytes, AreReadFromPairsOfHexDigits)
{
    EXPECT_EQ(kvx::parseHex("0000803f"), std::string("\0\0\x80\x3F", 4));
    EXPECT_EQ(kvx::parseHex(" 00 00\t80\n3F "), std::string("\0\0\x80\x3F", 4));
    EXPECT_EQ(kvx::parseHex(""), "");
    for (const char* text : {"0", "000", "0x00", "gg", "-1", "+1", "0g"})
        EXPECT_THROW(kvx::parseHex(text), kvx::WrongUsage) << text;
}

} // namespace
