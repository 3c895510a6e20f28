// The scripts at the front door, each in a small tree of its own, with the programs it calls replaced where
// they would reach out of it.
#include "tests/rules/source_tree.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using Environment = support::Child::Environment;

void writeFile(const std::string& path, const std::string& text)
{
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path) << text;
}

void writeProgram(const std::string& path, const std::string& text)
{
    writeFile(path, "#!/usr/bin/env bash\n" + text);
    fs::permissions(path, fs::perms::owner_all);
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct ScriptTree : support::TemporaryFolder {
    explicit ScriptTree(const std::string& script)
    {
        fs::create_directory(*this / "scripts");
        fs::copy_file(rules::top() / "scripts" / script, (*this / ("scripts/" + script)));
    }
    support::ChildResult run(const std::string& script, const Environment& environment) const
    {
        return support::runChild({(*this / ("scripts/" + script))}, environment, path());
    }
};

// A clone with one tracked file, and one of version control that breaks the rules.
struct TextTree : ScriptTree {
    TextTree() : ScriptTree("check-text")
    {
        fs::copy_file(rules::top() / ".clang-format", *this / ".clang-format");
        writeFile(*this / "tracked.cpp", "int one = 1;\n");
        EXPECT_EQ(support::runChild({"git", "init", "-q"}, {}, path()).exitCode, 0);
        EXPECT_EQ(support::runChild({"git", "add", "."}, {}, path()).exitCode, 0);
        writeFile(*this / ".git/note", "a blank at the end \n");
    }
};

TEST(CheckText, LooksAtWhatIsTrackedWhoeverOwnsTheClone)
{
    for (const char* other : {"0", "1"}) {
        SCOPED_TRACE(other);
        const TextTree tree;
        const Environment environment = {{"GIT_TEST_ASSUME_DIFFERENT_OWNER", other}};
        writeFile(tree / "mine.txt", "not tracked, so nobody's business \n");
        const auto good = tree.run("check-text", environment);
        EXPECT_EQ(good.exitCode, 0) << good.err;

        writeFile(tree / "tracked.cpp", "int one = 1; \n");
        EXPECT_EQ(tree.run("check-text", environment).exitCode, 1);
    }
}

TEST(CheckText, LeavesVersionControlAloneWhereGitIsOfNoUse)
{
    const TextTree tree;
    const Environment environment = {{"GIT_DIR", "/nowhere"}};
    const auto good = tree.run("check-text", environment);
    EXPECT_EQ(good.exitCode, 0) << good.err;

    writeFile(tree / "letter.txt", "a blank at the end \n");
    const auto bad = tree.run("check-text", environment);
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_NE(bad.err.find("letter.txt"), std::string::npos) << bad.err;
}

// A machine without a single package, on which installing fails `failures` times.
struct BareMachine : ScriptTree {
    explicit BareMachine(int failures) : ScriptTree("setup")
    {
        writeFile(*this / "failures", std::to_string(failures));
        writeProgram(*this / "bin/id", "echo 0\n");
        writeProgram(*this / "bin/dpkg", "echo i386\n");
        writeProgram(*this / "bin/dpkg-query", R"(
[ -e installed ] && for name in "${@:3}"; do echo "${name%:*} i386 installed"; done
true
)");
        writeProgram(*this / "bin/apt-get", R"X(
mending=
case " $* " in *" --fix-missing "*) mending=mending ;; esac
echo "$1 $mending" >>calls
[ "$1" = install ] || exit 0
left=$(cat failures)
[ "$left" = 0 ] && touch installed && exit 0
echo $((left - 1)) >failures
echo "E: Failed to fetch some.deb  404  Not Found" >&2
exit 100
)X");
    }
    support::ChildResult setUp() const
    {
        return run("setup", {{"PATH", *this / "bin" + ":" + std::getenv("PATH")}});
    }
};

TEST(Setup, RefreshesTheListsAndTriesOnceMore)
{
    const struct {
        int failures, exitCode;
        const char* calls;
    } facts[] = {
        {0, 0, "update \ninstall \n"},
        {1, 0, "update \ninstall \nupdate \ninstall mending\n"},
        {2, 1, "update \ninstall \nupdate \ninstall mending\n"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.failures);
        const BareMachine machine(fact.failures);
        const auto result = machine.setUp();
        EXPECT_EQ(result.exitCode, fact.exitCode) << result.err;
        EXPECT_EQ(readFile(machine / "calls"), fact.calls);
        EXPECT_EQ(result.err.find("404") != std::string::npos, fact.exitCode != 0) << result.err;
    }
}

// The programs that it calls only note what they are called with.
TEST(Run, WritesIntoTheBuildFolderWhateverTheCurrentFolder)
{
    const support::TemporaryFolder tree;
    fs::copy_file(rules::top() / "run", tree / "run");
    writeProgram(tree / "scripts/setup", "");
    writeProgram(tree / "scripts/build", "");
    writeProgram(tree / "build/i386/kvx", "echo \"$*\"\n");
    const auto result = support::runChild({tree / "run", "song.wav", "--rate", "2"}, {}, "/proc");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "tune " + (tree / "build/tune.wav") + " --quiet\nplay --keep " +
                              (tree / "build/run") + " --otherwise " + (tree / "build/tune.wav") +
                              " song.wav --rate 2\n");
}

} // namespace
