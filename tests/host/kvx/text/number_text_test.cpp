// Numbers as a user writes them.
#include "host/kvx/text/number_text.h"

#include <gtest/gtest.h>

namespace {

TEST(NumberText, IsReadWholeOrNotAtAll)
{
    const struct {
        const char* text;
        std::optional<double> number;
        const char* why;
    } facts[] = {
        {"0", 0.0, "plain"},
        {"-0.5", -0.5, "a sign and a point"},
        {"+3", 3.0, "a sign that says nothing new"},
        {"1e3", 1000.0, "an exponent"},
        {".5", 0.5, "no digit in front"},
        {"", std::nullopt, "nothing"},
        {"+", std::nullopt, "a sign alone"},
        {"+-3", std::nullopt, "two signs"},
        {" 1", std::nullopt, "a blank"},
        {"1x", std::nullopt, "something behind it"},
        {"1,5", std::nullopt, "a comma separates"},
        {"nan", std::nullopt, "no number"},
        {"inf", std::nullopt, "not finite"},
        {"1e999", std::nullopt, "beyond all"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::readReal(fact.text), fact.number) << fact.why;
}

TEST(NumberText, ReadsListsWithoutHoles)
{
    using List = std::optional<std::vector<double>>;
    EXPECT_EQ(kvx::readReals("1"), List({1}));
    EXPECT_EQ(kvx::readReals("1,-2,3.5"), List({1, -2, 3.5}));
    for (const char* text : {"", ",", "1,", ",1", "1,,2", "1;2", "1, 2"})
        EXPECT_EQ(kvx::readReals(text), std::nullopt) << text;
}

} // namespace
