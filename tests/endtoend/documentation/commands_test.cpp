// Runs the shell commands that README.md and docs/ show.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/endtoend/documentation/markdown.h"

#include <regex>
#include <set>

namespace {

using namespace endtoend;

// Commands that this test does not run.
const struct {
    const char* start; ///< the beginning of the command
    const char* reason;
} notRun[] = {
    {"./run", "tests/rules/scripts_test.cpp runs it with fake programs"},
    {"./check", "runs this test"},
    {"scripts/bench", "measures for minutes, on a quiet machine only"},
    {"scripts/build i386 ", "runs a build; the test checks that the target was built"},
    {"build/i386/examples/", "tests/endtoend/documentation/examples_test.cpp runs the examples"},
    {"cmake --preset macos-cross", "needs a Mac's SDK"},
    {"cmake --build --preset macos-cross", "needs a Mac's SDK"},
};

bool startsWith(const std::string& text, const std::string& prefix) { return text.rfind(prefix, 0) == 0; }

/// The commands in a document: the lines of code blocks "sh" without their remarks, and inline code that
/// begins like a command.
std::set<std::string> commandsIn(const std::string& document)
{
    std::set<std::string> commands;
    std::string text = document;
    for (const CodeBlock& block : codeBlocks(document)) {
        text.replace(text.find(block.text), block.text.size(), "");
        if (block.language != "sh") continue;
        std::istringstream lines(block.text);
        for (std::string line; std::getline(lines, line);)
            commands.insert(std::regex_replace(line, std::regex(" +(#.*)?$"), ""));
    }
    static const std::regex code(
        "`((kvx|cmake|ctest) [^`]+|(\\./(run|check)|scripts/[a-z-]+|build/i386/examples/)[^`]*)`");
    for (std::sregex_iterator each(text.begin(), text.end(), code), end; each != end; ++each)
        commands.insert((*each)[1]);
    commands.erase("");
    return commands;
}

// Commands in a sentence, without the arguments that they need. The test requests their help.
const std::set<std::string> mentions = {
    "kvx get",    "kvx set",         "kvx play",       "kvx play --buffered",
    "kvx render", "kvx play --fast", "kvx soundstream"};

// The texts that replace the placeholders of commands.
const std::pair<std::regex, const char*> arguments[] = {
    {std::regex("(play|soundstream) FILE"), "$1 --fast FILE"},
    {std::regex("FILE(…)?"), "song.wav"},
    {std::regex("OUT"), "out"},
    {std::regex("\\[NAME\\]"), "AUPlayerKVX"},
    {std::regex("\\[COMMAND\\]"), "play"},
};

/// The command in a form that can run.
std::string runnable(std::string command)
{
    if (mentions.count(command)) return command + " --help";
    for (const auto& each : arguments) command = std::regex_replace(command, each.first, each.second);
    return command;
}

TEST(ShownCommands, Run)
{
    const support::TemporaryFolder folder;
    runKvx({"tune", "--quiet", folder / "song.wav"});
    int count = 0;
    for (const std::string& document : userDocuments())
        for (const std::string& command : commandsIn(readDocument(document))) {
            SCOPED_TRACE(document + ": " + command);
            if (std::any_of(std::begin(notRun), std::end(notRun),
                            [&](const auto& row) { return startsWith(command, row.start); }))
                continue;
            ++count;
            const auto result =
                support::runChild({"sh", "-c", "PATH=" KVX_BINARY_DIR ":$PATH; exec " + runnable(command)},
                                  {{"HOME", folder.path()}}, folder.path());
            EXPECT_EQ(result.exitCode, 0) << runnable(command) << "\n" << result.out << result.err;
        }
    EXPECT_GT(count, 15);
}

TEST(ShownCommands, BuildTargetsThatExist)
{
    const std::string start = "scripts/build i386 ";
    std::set<std::string> targets;
    for (const std::string& document : userDocuments())
        for (const std::string& command : commandsIn(readDocument(document)))
            if (startsWith(command, start)) targets.insert(command.substr(start.size()));
    EXPECT_FALSE(targets.empty());
    for (const std::string& target : targets)
        EXPECT_TRUE(std::filesystem::exists(std::string(KVX_BINARY_DIR "/examples/") + target)) << target;
}

TEST(ShownCommands, AreFoundInBlocksAndInlineCode)
{
    EXPECT_EQ(
        commandsIn(
            "```sh\n./run   # plays\n```\nSee `kvx play FILE…`, `kvx`, `scripts/build i386 x` and `a`."),
        (std::set<std::string>{"./run", "kvx play FILE…", "scripts/build i386 x"}));
    EXPECT_EQ(runnable("kvx play FILE…"), "kvx play --fast song.wav");
    EXPECT_EQ(runnable("kvx render FILE OUT.flac"), "kvx render song.wav out.flac");
    EXPECT_EQ(runnable("kvx get"), "kvx get --help");
    EXPECT_EQ(runnable("kvx play --buffered"), "kvx play --buffered --help");
    EXPECT_EQ(runnable("kvx classes [NAME]"), "kvx classes AUPlayerKVX");
}

} // namespace
