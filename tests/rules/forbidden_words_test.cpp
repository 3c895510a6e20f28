// Words that stay out of the tree: marks of unfinished work, and names of papers that only their writers
// have.
#include "tests/rules/source_tree.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

// Put together from halves, so that this file is as clean as the others.
const std::regex unfinished("\\b(to"
                            "do|fix"
                            "me|ha"
                            "ck|not imple"
                            "mented|st"
                            "ub)\\b",
                            std::regex::icase);
const std::regex cross("\\bXX"
                       "X\\b"); // small, it is a pattern of letters
const std::regex papers("\\bparts? [1-6]\\.[1-6]\\b|\\bspecifi"
                        "cations?\\b|\\bthe sp"
                        "ec\\b|\\bper sp"
                        "ec\\b|design\\.m"
                        "d\\b",
                        std::regex::icase);

std::vector<std::string> linesWith(const std::regex& words, const std::string& text)
{
    std::vector<std::string> found;
    for (const std::string& line : rules::lines(text))
        if (std::regex_search(line, words)) found.push_back(line);
    return found;
}

bool isText(const std::string& path, const std::string& text)
{
    return path.find("/corpus/") == path.npos && path != "LICENSE" && text.find('\0') == text.npos;
}

// The words of a file's name, told apart as those of a sentence are.
std::string asSentence(std::string path)
{
    for (char& each : path)
        if (each == '_' || each == '-' || each == '/') each = ' ';
    return path;
}

std::vector<std::string> faultsOf(const std::string& path, const std::string& text)
{
    std::vector<std::string> found;
    for (const std::regex* words : {&unfinished, &cross, &papers}) {
        for (const std::string& name : linesWith(*words, asSentence(path))) found.push_back("name: " + name);
        for (const std::string& line : linesWith(*words, text)) found.push_back(line);
    }
    return found;
}

TEST(Words, OfUnfinishedWorkStayOut)
{
    for (const std::string& file : rules::files()) {
        const std::string text = rules::read(file);
        for (const std::string& fault : faultsOf(file, isText(file, text) ? text : ""))
            ADD_FAILURE() << file << ": " << fault;
    }
}

// Put together from halves, as above.
TEST(Words, AreFoundWhereTheyStand)
{
    const struct {
        std::string path, text;
        std::size_t faults;
        const char* why;
    } facts[] = {
        // clang-format off
        {"a.cpp",            std::string("// TO") + "DO: later\nfine\n",    1, "a mark"},
        {"a.cpp",            std::string("// to") + "do: later\n",          1, "in small letters"},
        {"a.cpp",            std::string("A St") + "ub, Not Imple" + "mented", 1, "a line counts once"},
        {"a.cpp", std::string("// XX") + "X: later\n",                       1, "a cross"},
        {"a.cpp", "xxx. .... xxx.\n",                                       0, "a pattern of letters"},
        {"a.cpp",            "autodocs, stubborn, hackle, Xxxx\n",          0, "parts of other words"},
        {"a.cpp",            std::string("as Part 3") + ".1 says\n",        1, "a paper"},
        {"a.cpp",            std::string("AS PART 3") + ".1 SAYS\n",        1, "in capitals"},
        {"a.cpp",            std::string("Per Sp") + "ec, The Specifi" + "cation\n", 1, "likewise"},
        {"a.cpp",            "a part of 3.1 seconds; special\n",           0, "neither is one"},
        {std::string("st") + "ub.cpp",          "", 1, "a file's name"},
        {std::string("tests/my_To") + "do.cpp", "", 1, "a word of a file's name"},
        {std::string("docs/DESIGN.M") + "D",    "", 1, "a paper's name"},
        {std::string("a-specifi") + "cation/x", "", 1, "a folder's name"},
        {"stubborn_methods.cpp", "", 0, "parts of other words"},
        // clang-format on
    };
    for (const auto& fact : facts)
        EXPECT_EQ(faultsOf(fact.path, fact.text).size(), fact.faults)
            << fact.why << ": " << fact.path << ": " << fact.text;
}

} // namespace
