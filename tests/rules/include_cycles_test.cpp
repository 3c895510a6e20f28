// Checks that the tree has no include cycles between units (a header and its source) or between folders.
#include "tests/rules/include_graph.h"
#include "tests/rules/source_tree.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

std::vector<rules::Include> includesOfTheTree()
{
    std::vector<rules::Include> all;
    for (const std::string& file : rules::files()) {
        if (!rules::isSource(file)) continue;
        const std::vector<rules::Include> found = rules::includesOf(file, rules::read(file));
        all.insert(all.end(), found.begin(), found.end());
    }
    return all;
}

TEST(IncludeCycles, DoNotExistBetweenUnits)
{
    const rules::IncludeGraph units = rules::unitsOf(includesOfTheTree());
    EXPECT_GT(units.size(), 500u) << "the sources were not read";
    EXPECT_EQ(rules::cycleIn(units), Names{});
}

TEST(IncludeCycles, DoNotExistBetweenFolders)
{
    const rules::IncludeGraph folders = rules::foldersOf(rules::unitsOf(includesOfTheTree()));
    EXPECT_GT(folders.size(), 30u) << "the sources were not read";
    EXPECT_EQ(rules::cycleIn(folders), Names{});
}

TEST(IncludeCycles, AreFoundBetweenUnits)
{
    const struct {
        std::vector<rules::Include> includes;
        Names cycle;
        const char* why;
    } facts[] = {
        // clang-format off
        {{{"a/x.h", 1, "a/y.h", true}, {"a/y.h", 1, "a/z.h", true}},     {},                         "a chain is not a cycle"},
        {{{"a/x.cpp", 1, "a/x.h", true}},                                {},                         "a source and its header are one unit"},
        {{{"a/x.h", 1, "a/y.h", true}, {"a/y.cpp", 1, "a/x.h", true}},   {"a/x", "a/y", "a/x"},      "the includes of a source count"},
        {{{"a/v.h", 1, "a/x.h", true}, {"a/x.h", 1, "a/y.h", true}, {"a/y.h", 1, "a/z.h", true}, {"a/z.h", 1, "a/x.h", true}},
                                                                         {"a/x", "a/y", "a/z", "a/x"}, "a unit outside the cycle is not listed"},
        {{{"platform/include/A/B.h", 1, "C/D.h", false}, {"platform/include/C/D.h", 1, "A/B.h", false}},
             {"platform/include/A/B", "platform/include/C/D", "platform/include/A/B"},               "public headers include each other by public names"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_EQ(rules::cycleIn(rules::unitsOf(fact.includes)), fact.cycle);
    }
}

TEST(IncludeCycles, AreFoundBetweenFolders)
{
    const struct {
        rules::IncludeGraph units;
        Names cycle;
        const char* why;
    } facts[] = {
        // clang-format off
        {{{"a/x", {"b/y"}}, {"b/z", {"c/x"}}},                        {},                     "a chain is not a cycle"},
        {{{"a/x", {"b/y"}}, {"b/z", {"a/w"}}},                        {"a", "b", "a"},        "different units connect the same folders"},
        {{{"a/x", {"a/s/y"}}, {"a/s/y", {"a/x"}}},                    {},                     "a folder and its subfolder may include each other"},
        {{{"p/a/s/x", {"p/b/y"}}, {"p/b/y", {"p/a/x"}}},              {"p/a", "p/b", "p/a"},  "a subfolder belongs to its folder"},
        {{{"p/a/s/x", {"p/a/t/y"}}, {"p/a/t/z", {"p/a/s/x"}}},        {"p/a/s", "p/a/t", "p/a/s"}, "subfolders are siblings, too"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_EQ(rules::cycleIn(rules::foldersOf(fact.units)), fact.cycle);
    }
}

} // namespace
