// Tests the scripts `run`, `setup`, `build` and `check-text`. Each test copies one script into a temporary
// folder, with fake programs in place of programs that would change the machine.
#include "tests/rules/source_tree.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

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

struct ScriptTree : support::TemporaryFolder {
    explicit ScriptTree(const std::string& script)
    {
        fs::create_directory(*this / "scripts");
        fs::copy_file(rules::root() / "scripts" / script, *this / ("scripts/" + script));
    }
    support::ChildResult run(const std::string& script, const Environment& environment) const
    {
        return support::runChild({*this / ("scripts/" + script)}, environment, path());
    }
};

// A repository with a tracked file, and a file in `.git` that violates the text rules.
struct TextTree : ScriptTree {
    TextTree() : ScriptTree("check-text")
    {
        fs::copy_file(rules::root() / ".clang-format", *this / ".clang-format");
        writeFile(*this / "tracked.cpp", "int one = 1;\n");
        EXPECT_EQ(support::runChild({"git", "init", "-q"}, {}, path()).exitCode, 0);
        EXPECT_EQ(support::runChild({"git", "add", "."}, {}, path()).exitCode, 0);
        writeFile(*this / ".git/note", "a space at the end \n");
    }
};

TEST(CheckText, ReadsTrackedFilesOnlyEvenInTheCloneOfAnotherUser)
{
    for (const char* other : {"0", "1"}) {
        SCOPED_TRACE(other);
        const TextTree tree;
        const Environment environment = {{"GIT_TEST_ASSUME_DIFFERENT_OWNER", other}};
        writeFile(tree / "mine.txt", "an untracked file with a space at the end \n");
        const auto good = tree.run("check-text", environment);
        EXPECT_EQ(good.exitCode, 0) << good.err;

        writeFile(tree / "tracked.cpp", "int one = 1; \n");
        EXPECT_EQ(tree.run("check-text", environment).exitCode, 1);
    }
}

TEST(CheckText, AcceptsTrackedFilesThatAreMissing)
{
    const TextTree tree;
    writeFile(tree / "first.cpp", "int one = 1;\n");
    EXPECT_EQ(support::runChild({"git", "add", "."}, {}, tree.path()).exitCode, 0);
    fs::remove(tree / "tracked.cpp"); // the last tracked file
    const auto good = tree.run("check-text", {});
    EXPECT_EQ(good.exitCode, 0) << good.err;
}

TEST(CheckText, SkipsTheGitFolderIfGitCannotReadTheRepository)
{
    const TextTree tree;
    const Environment environment = {{"GIT_DIR", "/missing"}};
    const auto good = tree.run("check-text", environment);
    EXPECT_EQ(good.exitCode, 0) << good.err;

    writeFile(tree / "letter.txt", "a space at the end \n");
    const auto bad = tree.run("check-text", environment);
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_NE(bad.err.find("letter.txt"), std::string::npos) << bad.err;
}

// The string literals are in two parts, so that this file contains no forbidden word.
TEST(CheckText, FindsForbiddenWordsInTextsAndPaths)
{
    const struct {
        const char *path, *text;
        bool isForbidden;
        const char* why;
    } facts[] = {
        // clang-format off
        {"mark.txt",         "// TO" "DO: later\nfine\n",          true,  "a mark of unfinished work"},
        {"lower_case.txt",   "// to" "do: later\n",                true,  "a mark in lower case"},
        {"phrase.txt",       "A St" "ub, Not Imple" "mented\n",    true,  "two marks in one line"},
        {"letters.txt",      "// XX" "X: later\n",                 true,  "a mark of three letters"},
        {"pattern.txt",      "xxx. .... xxx.\n",                   false, "a pattern of letters"},
        {"parts.txt",        "autodocs, stubborn, hackle, Xxxx\n", false, "parts of other words"},
        {"identifier.txt",   "int myTo" "do, st" "ub_count;\n",    true,  "a word in an identifier"},
        {"number.txt",       "as Part 3" ".1 says\n",              true,  "a numbered part of a document"},
        {"upper_case.txt",   "AS PART 3" ".1 SAYS\n",              true,  "a numbered part in upper case"},
        {"document.txt",     "The Specifi" "cation\n",             true,  "the name of a document"},
        {"short_name.txt",   "Per Sp" "ec\n",                      true,  "the short name of a document"},
        {"ordinary.txt",     "a part of 3.1 seconds; special\n",   false, "an ordinary number and word"},
        {"subject.txt",      "no" "body waits\n",                   true,  "a sentence without a proper subject"},
        {"time.txt",         "Mean" "while it waits\n",             true,  "a vague time"},
        {"lines.cpp",        "// a thread of its\n// " "own\n",    true,  "a phrase on two lines of a comment"},
        {"test_name.txt",    "ADeviceIsTol" "dOnce\n",             true,  "a phrase in an identifier"},
        {"end.txt",          "leave it as it " "is.\n",            true,  "a vague clause at the end of a sentence"},
        {"clause.txt",       "as soon as it is full\n",            false, "the same words in another clause"},
        {"harmless.txt",     "its own thread, told apart\n",       false, "ordinary words"},
        {"st" "ub.cpp",          "\n", true,  "the name of a file"},
        {"tests/my_To" "do.cpp", "\n", true,  "a word in the name of a file"},
        {"docs/DESIGN.M" "D",    "\n", true,  "the name of a document as a file"},
        {"a-specifi" "cation/x", "\n", true,  "the name of a folder"},
        {"stubborn_methods.cpp", "\n", false, "part of another word"},
        // clang-format on
    };
    const TextTree tree;
    for (const auto& fact : facts) writeFile(tree / fact.path, fact.text);
    EXPECT_EQ(support::runChild({"git", "add", "."}, {}, tree.path()).exitCode, 0);
    const auto result = tree.run("check-text", {});
    EXPECT_EQ(result.exitCode, 1);
    for (const auto& fact : facts)
        EXPECT_EQ(("\n" + result.err).find("\n" + std::string(fact.path) + ":") != std::string::npos,
                  fact.isForbidden)
            << fact.path << ": " << fact.why << "\n"
            << result.err;
}

// A simulated machine without any package. The first `failures` attempts to install packages fail.
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
retry=
case " $* " in *" --fix-missing "*) retry=retry ;; esac
echo "$1 $retry" >>calls
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

TEST(Setup, UpdatesThePackageListsAndRetriesOnceAfterAFailure)
{
    const struct {
        int failures, exitCode;
        const char* calls;
    } facts[] = {
        {0, 0, "update \ninstall \n"},
        {1, 0, "update \ninstall \nupdate \ninstall retry\n"},
        {2, 1, "update \ninstall \nupdate \ninstall retry\n"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.failures);
        const BareMachine machine(fact.failures);
        const auto result = machine.setUp();
        EXPECT_EQ(result.exitCode, fact.exitCode) << result.err;
        EXPECT_EQ(rules::read(machine / "calls"), fact.calls);
        EXPECT_EQ(result.err.find("404") != std::string::npos, fact.exitCode != 0) << result.err;
    }
}

// A tree whose build has 300 steps on a machine with two processors. The second step ends when the test
// creates the file `go`; it fails if there is a file `bad`.
struct BuildTree : ScriptTree {
    BuildTree() : ScriptTree("build")
    {
        writeProgram(*this / "bin/nproc", "echo 2\n");
        writeProgram(*this / "bin/cmake", R"X(
for i in $(seq 40); do echo "line $i"; done
[ ! -e unconfigured ] || exit 1
mkdir -p build/p && touch build/p/build.ninja
)X");
        writeProgram(*this / "bin/ninja", R"X(
case " $* " in *" -t commands "*) seq 300; exit ;; esac
echo "[1/300] one"
while [ ! -e go ]; do sleep 0.01; done
[ -e bad ] || exit 0
echo "[2/300] two"
echo "FAILED: two.o"
echo "two.cpp:1: error"
exit 1
)X");
    }
    Environment environment() const { return {{"PATH", *this / "bin" + ":" + std::getenv("PATH")}}; }

    /// Run the build, and let it continue after `text` appears in its output.
    support::ChildResult build(const std::vector<std::string>& command, const std::string& text) const
    {
        fs::remove(*this / "go");
        support::Child child(command, environment(), path());
        while (child.isRunning() && child.outSoFar().find(text) == std::string::npos)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        writeFile(*this / "go", "");
        return child.wait();
    }
};

TEST(Build, NamesTheExpectedTimeOfTheFirstBuild)
{
    const BuildTree tree;
    const auto first = tree.build({"scripts/build", "p"}, "(log in");
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_EQ(first.out, "build: configuring p\n"
                         "build: building p: 300 steps, about 2 min (log in build/p.log)\n");
    const auto second = tree.build({"scripts/build", "p"}, "(log in");
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_EQ(second.out, "build: building p (log in build/p.log)\n");
}

TEST(Build, ShowsTheNumberOfTheLastStepOnATerminal)
{
    const BuildTree tree;
    const auto result = tree.build({"script", "-qec", "scripts/build p", "/dev/null"}, "\rbuild: [1/300]");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out.substr(result.out.rfind('\r')), "\r\x1b[K") << "the line is erased at the end";
}

TEST(Build, ShowsTheFirstErrorOfAFailedBuild)
{
    const BuildTree tree;
    writeFile(tree / "bad", "");
    const auto result = tree.build({"scripts/build", "p"}, "(log in");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "FAILED: two.o\n"
                          "two.cpp:1: error\n"
                          "build: p failed; the cause is in the lines above, and in build/p.log\n");
}

TEST(Build, ShowsTheEndOfTheLogIfTheTreeCannotBeConfigured)
{
    const BuildTree tree;
    writeFile(tree / "unconfigured", "");
    const auto result = support::runChild({"scripts/build", "p"}, tree.environment(), tree.path());
    EXPECT_EQ(result.exitCode, 1);
    std::string expected;
    for (int i = 11; i <= 40; ++i) expected += "line " + std::to_string(i) + "\n";
    EXPECT_EQ(result.err,
              expected + "build: p failed; the cause is in the lines above, and in build/p.log\n");
}

// In this test the command kvx is a script that prints its arguments.
TEST(Run, WritesIntoTheBuildFolderFromAnyCurrentFolder)
{
    const support::TemporaryFolder tree;
    fs::copy_file(rules::root() / "run", tree / "run");
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
