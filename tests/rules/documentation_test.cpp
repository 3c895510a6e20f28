// The pages at the front door name files and folders; each must be there. A page that names what has gone
// sends a newcomer astray.
#include "tests/rules/source_tree.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

namespace fs = std::filesystem;

/// Paths of this tree that a page names: link targets, and code in backquotes that looks like a path.
std::vector<std::string> pathsIn(const std::string& text)
{
    std::vector<std::string> paths;
    static const std::regex link("\\]\\(([^)#]+)(#[^)]*)?\\)");
    for (std::sregex_iterator each(text.begin(), text.end(), link), end; each != end; ++each)
        if ((*each)[1].str().find("://") == std::string::npos) paths.push_back((*each)[1]);

    static const std::regex code(
        "`(\\./)?([A-Za-z0-9_.-]+(/[A-Za-z0-9_.-]*)+|[A-Za-z0-9_-]+\\.(md|cpp|h|cmake|txt|json))`");
    for (std::sregex_iterator each(text.begin(), text.end(), code), end; each != end; ++each)
        paths.push_back((*each)[2]);
    return paths;
}

// Made by building or running, not tracked.
bool isMade(const std::string& path) { return path.rfind("build/", 0) == 0; }

bool standsThere(const std::string& page, const std::string& path)
{
    const fs::path beside = (rules::top() / page).parent_path() / path;
    return isMade(path) || fs::exists(rules::top() / path) || fs::exists(beside) ||
           fs::exists(rules::top() / "platform/include" / path);
}

TEST(Pages, NameOnlyWhatIsThere)
{
    int named = 0;
    for (const std::string& page : rules::files()) {
        if (fs::path(page).extension() != ".md") continue;
        for (const std::string& path : pathsIn(rules::read(page))) {
            ++named;
            EXPECT_TRUE(standsThere(page, path)) << page << " names " << path;
        }
    }
    EXPECT_GT(named, 30);
}

TEST(Pages, AtTheFrontDoorAreThere)
{
    for (const char* page : {"README.md", "CONTRIBUTING.md", "LICENSE", "run", "check"})
        EXPECT_TRUE(fs::exists(rules::top() / page)) << page;
}

// What the front page shows is what is built.
TEST(Pages, ShowTheExampleAsItIs)
{
    const std::string program = rules::read("examples/tone.cpp");
    const auto main = program.find("int main(");
    ASSERT_NE(main, program.npos);
    EXPECT_NE(rules::read("README.md").find("```cpp\n" + program.substr(main) + "```"), std::string::npos);
}

TEST(Pages, AreReadForLinksAndCode)
{
    EXPECT_EQ(
        pathsIn("see [the guide](docs/guide.md#top) and `host/kvx/` or `word.h`, not `a b` nor `kvx play`"),
        (std::vector<std::string>{"docs/guide.md", "host/kvx/", "word.h"}));
    EXPECT_FALSE(standsThere("README.md", "no/such/file.cpp"));
    EXPECT_TRUE(pathsIn("[elsewhere](https://example.org/x)").empty());
}

} // namespace
