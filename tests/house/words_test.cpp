// Words that stay out of the tree: marks of unfinished work, and names of papers that only their writers
// have.
#include "tests/house/tree.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

// Put together from halves, so that this file is as clean as the others.
const std::regex unfinished("\\b(TO"
                            "DO|FIX"
                            "ME|XX"
                            "X|HA"
                            "CK|not imple"
                            "mented|st"
                            "ub)\\b");
const std::regex papers("\\b[Pp]arts? [1-6]\\.[1-6]\\b|\\bspecifi"
                        "cation\\b|\\b[Tt]he sp"
                        "ec\\b|\\bper sp"
                        "ec\\b|design\\.m"
                        "d\\b");

std::vector<std::string> linesWith(const std::regex& words, const std::string& text)
{
    std::vector<std::string> found;
    for (const std::string& line : house::lines(text))
        if (std::regex_search(line, words)) found.push_back(line);
    return found;
}

bool isText(const std::string& path, const std::string& text)
{
    return path.find("/corpus/") == path.npos && path != "LICENSE" && text.find('\0') == text.npos;
}

TEST(Words, OfUnfinishedWorkStayOut)
{
    for (const std::string& file : house::files()) {
        const std::string text = house::read(file);
        if (!isText(file, text)) continue;
        for (const std::string& line : linesWith(unfinished, text)) ADD_FAILURE() << file << ": " << line;
        for (const std::string& line : linesWith(papers, text)) ADD_FAILURE() << file << ": " << line;
    }
}

TEST(Words, AreFoundWhereTheyStand)
{
    EXPECT_EQ(linesWith(unfinished, "// TO"
                                    "DO: later\nfine\n")
                  .size(),
              1u);
    EXPECT_EQ(linesWith(unfinished, "autodocs, stubborn\n").size(), 0u);
    EXPECT_EQ(linesWith(papers, "as Part 3"
                                ".1 says\n")
                  .size(),
              1u);
    EXPECT_EQ(linesWith(papers, "a part of 3.1 seconds\n").size(), 0u);
}

} // namespace
