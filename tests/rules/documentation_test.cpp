// Checks that the files and folders named in the documentation exist.
#include "tests/rules/source_tree.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

namespace fs = std::filesystem;

/// Return a document without its fenced code blocks, which may contain text that looks like a link.
std::string withoutCodeBlocks(const std::string& document)
{
    std::string text;
    bool isInside = false;
    for (const std::string& line : rules::lines(document)) {
        const bool isFence = line.rfind("```", 0) == 0;
        if (!isInside && !isFence) text += line + "\n";
        isInside = isInside != isFence;
    }
    return text;
}

/// Return the repository paths in a document: link targets, and inline code that has the form of a path.
std::vector<std::string> pathsIn(const std::string& document)
{
    const std::string text = withoutCodeBlocks(document);
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

/// Return whether a build or a program creates the file, so that the repository does not contain it.
bool isGenerated(const std::string& path) { return path.rfind("build/", 0) == 0; }

bool exists(const std::string& document, const std::string& path)
{
    const fs::path sibling = (rules::root() / document).parent_path() / path;
    return isGenerated(path) || fs::exists(rules::root() / path) || fs::exists(sibling) ||
           fs::exists(rules::root() / "platform/include" / path);
}

TEST(Documentation, NamesExistingFilesOnly)
{
    int count = 0;
    for (const std::string& document : rules::files()) {
        if (fs::path(document).extension() != ".md") continue;
        for (const std::string& path : pathsIn(rules::read(document))) {
            ++count;
            EXPECT_TRUE(exists(document, path)) << document << " names " << path;
        }
    }
    EXPECT_GT(count, 30);
}

TEST(Documentation, HasItsMainFilesInTheRootFolder)
{
    for (const char* file : {"README.md", "CONTRIBUTING.md", "LICENSE", "run", "check"})
        EXPECT_TRUE(fs::exists(rules::root() / file)) << file;
}

TEST(Documentation, ShowsTheExampleUnchanged)
{
    const std::string program = rules::read("examples/tone.cpp");
    const auto main = program.find("int main(");
    ASSERT_NE(main, program.npos);
    EXPECT_NE(rules::read("README.md").find("```cpp\n" + program.substr(main) + "```"), std::string::npos);
}

TEST(Documentation, IsSearchedForLinksAndInlineCode)
{
    EXPECT_EQ(
        pathsIn("see [the guide](docs/guide.md#top) and `host/kvx/` or `word.h`, not `a b` nor `kvx play`"),
        (std::vector<std::string>{"docs/guide.md", "host/kvx/", "word.h"}));
    EXPECT_FALSE(exists("README.md", "no/such/file.cpp"));
    EXPECT_TRUE(pathsIn("[elsewhere](https://example.org/x)").empty());
    EXPECT_EQ(pathsIn("```cpp\n[player](int) {}\n```\n[a](b.md)"), (std::vector<std::string>{"b.md"}));
}

} // namespace
