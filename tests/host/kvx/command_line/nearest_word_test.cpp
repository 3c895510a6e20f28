// The word that the user meant by a misspelt word.
#include "host/kvx/command_line/nearest_word.h"

#include <gtest/gtest.h>

namespace {

TEST(NearestWord, DiffersByAtMostAThirdOfTheLetters)
{
    const std::vector<std::string> words = {"play",          "render", "--rate", "--device",
                                            "--device-rate", "get",    "set",    "--pan"};
    const struct {
        const char *word, *nearest, *why;
    } facts[] = {
        {"play", "play", "equal"},
        {"plya", "play", "an exchange of neighbours is one edit"},
        {"rendr", "render", "a letter is missing"},
        {"rrender", "render", "a letter too many"},
        {"--ratr", "--rate", "a letter is another one"},
        {"--device-rat", "--device-rate", "one edit, while --device needs four"},
        {"gte", "get", "an exchange is one edit of three letters"},
        {"gse", "", "two edits of three letters"},
        {"sing", "", "no word is near"},
        {"--gain", "", "two edits of four letters; the dashes do not count"},
        {"", "", "no word"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::nearestWord(fact.word, words), fact.nearest) << fact.word << ": " << fact.why;
    EXPECT_EQ(kvx::nearestWord("play", {}), "");
}

TEST(NearestWord, IsTheFirstOfEquallyNearWords)
{
    EXPECT_EQ(kvx::nearestWord("let", {"get", "set"}), "get");
    EXPECT_EQ(kvx::nearestWord("let", {"set", "get"}), "set");
}

} // namespace
