// Help in all its forms: `kvx help`, manual pages, completions; the version and the report for problems.
#include "host/kvx/command_line/manual_page.h"
#include "host/kvx/commands.h"
#include "tests/endtoend/command/kvx_runner.h"

#include <regex>

namespace {

using namespace endtoend;

struct KvxHelp : KvxTest {
    KvxHelp() { EXPECT_EQ(run({"help", "--quiet", "--files", "share"}).exitCode, 0); }

    std::string page(const kvx::Command& command) const
    {
        return bytesOf(folder / ("share/man/man1/" + manualPageName(command) + ".1"));
    }
    const std::string bash = "share/bash-completion/completions/kvx", zsh = "share/zsh/site-functions/_kvx",
                      fish = "share/fish/vendor_completions.d/kvx.fish";
};

bool isInstalled(const std::string& program)
{
    return support::runChild({"sh", "-c", "command -v " + program}).exitCode == 0;
}

std::vector<kvx::Command> commandsAndProgram()
{
    std::vector<kvx::Command> commands = kvx::allCommands();
    commands.push_back(kvx::program());
    return commands;
}

// ---- help ----

TEST_F(KvxHelp, IsTheSameWithHelpCommandAndOption)
{
    for (const kvx::Command& command : kvx::allCommands()) {
        const auto byCommand = run({"help", command.name}), byOption = run({command.name, "--help"});
        EXPECT_EQ(byCommand.exitCode, 0) << command.name;
        EXPECT_EQ(byCommand.out, byOption.out);
        EXPECT_EQ(byCommand.out.rfind(command.summary.substr(0, 20), 0), 0u) << byCommand.out;
    }
    EXPECT_EQ(run({"help"}).out, run({"--help"}).out);
    const auto result = run({"help", "rendr"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err,
              "kvx: help: there is no command rendr (did you mean render?); `kvx help` lists the commands\n");
}

TEST_F(KvxHelp, NamesTheNearestWord)
{
    std::ofstream(folder / "my song.wav") << "x";
    const struct {
        Arguments arguments;
        const char* message;
    } facts[] = {
        {{"my song.wav"},
         "kvx: there is no command my song.wav (to play it: `kvx play 'my song.wav'`); --help lists the "
         "arguments\n"},
        {{"plya", "a.wav"},
         "kvx: there is no command plya (did you mean play?); --help lists the arguments\n"},
        {{"info", "my song.wav"},
         "kvx: there is no command info (did you mean `kvx play --info 'my song.wav'`?); --help lists the "
         "arguments\n"},
        {{"play", "--bufered", "a.wav"},
         "kvx: play: there is no option --bufered (did you mean --buffered?); --help lists the arguments\n"},
        {{"--versoin"},
         "kvx: there is no option --versoin (did you mean --version?); --help lists the arguments\n"},
    };
    for (const auto& fact : facts) {
        const auto result = run(fact.arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.err, fact.message);
    }
}

TEST_F(KvxHelp, ShowsEachOptionWithItsExample)
{
    for (const kvx::Command& command : commandsAndProgram()) {
        const std::string help =
            run(command.name.empty() ? Arguments{"--help"} : Arguments{command.name, "--help"}).out;
        forEachOption(command, [&](const kvx::Option& option) {
            EXPECT_NE(help.find(option.longName()), std::string::npos) << option.names;
            EXPECT_NE(help.find("Example: " + exampleOf(command, option) + "\n"), std::string::npos)
                << option.names;
        });
        EXPECT_EQ(help.find("Excludes"), std::string::npos);
    }
}

// ---- manual pages ----

TEST_F(KvxHelp, ManualPagesHaveEachOptionOfTheHelp)
{
    for (const kvx::Command& command : commandsAndProgram()) {
        const std::string text = page(command);
        EXPECT_NE(text, "") << command.name;
        EXPECT_TRUE(
            std::all_of(text.begin(), text.end(), [](char c) { return c == '\n' || (c >= ' ' && c < 127); }))
            << command.name << " has only ASCII characters";
        forEachOption(command, [&](const kvx::Option& option) {
            const std::string name = std::regex_replace(option.longName(), std::regex("-"), "\\-");
            EXPECT_NE(text.find(name + "\\fR"), std::string::npos) << option.names;
        });
    }
}

TEST_F(KvxHelp, ManualPagesHaveNoErrors)
{
    if (!isInstalled("groff")) GTEST_SKIP() << "groff is not installed";
    for (const kvx::Command& command : commandsAndProgram()) {
        const auto result = support::runChild(
            {"groff", "-man", "-ww", "-Tascii", "share/man/man1/" + manualPageName(command) + ".1"}, {},
            folder.path());
        EXPECT_EQ(result.exitCode, 0) << command.name;
        EXPECT_EQ(result.err, "") << command.name;
        EXPECT_NE(result.out.find("General Commands Manual"), std::string::npos) << command.name;
    }
}

// ---- completions ----

TEST_F(KvxHelp, CompletionsAreValidScripts)
{
    for (const auto& [shell, file] :
         {std::pair("bash", bash), std::pair("zsh", zsh), std::pair("fish", fish)}) {
        if (!isInstalled(shell)) continue; // bash is always installed
        const auto result = support::runChild({shell, "-n", folder / file});
        EXPECT_EQ(result.exitCode, 0) << shell;
        EXPECT_EQ(result.err, "") << shell;
    }
}

/// Words before the cursor, and all completions of the last one.
const struct {
    Arguments words;
    Arguments completions;
} completions[] = {
    {{"kvx", "pl"}, {"play"}},
    {{"kvx", "--ver"}, {"--verbose", "--version"}},
    {{"kvx", "play", "--un"}, {"--unit"}},
    {{"kvx", "play", "--unit", ""}, {"time-pitch", "varispeed"}},
    {{"kvx", "play", "--eq", "t"}, {"treble", "telephone"}},
    {{"kvx", "play", "--rate", ""}, {}},
    {{"kvx", "play", "--rate", "2", "my"}, {"my song.wav"}},
    {{"kvx", "render", "my song.wav", "ot"}, {"other.wav"}},
    {{"kvx", "play", "--capture", "ot"}, {"other.wav"}},
    {{"kvx", "--verbose", "devices", "--wa"}, {"--watch"}},
    {{"kvx", "help", "re"}, {"render"}},
};

TEST_F(KvxHelp, BashCompletesCommandsOptionsWordsAndFiles)
{
    for (const char* name : {"my song.wav", "other.wav"}) std::ofstream(folder / name) << "x";
    for (const auto& fact : completions) {
        SCOPED_TRACE(testing::PrintToString(fact.words));
        const auto result = support::runChild(
            joined({"bash", "-c",
                    "source " + bash +
                        "; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _kvx; "
                        "if [ ${#COMPREPLY[@]} -gt 0 ]; then printf '%s\\n' \"${COMPREPLY[@]}\"; fi",
                    "bash"},
                   fact.words),
            {}, folder.path());
        std::string expected;
        for (const std::string& word : fact.completions) expected += word + "\n";
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.out, expected);
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(KvxHelp, FishCompletesCommandsOptionsAndWords)
{
    if (!isInstalled("fish")) GTEST_SKIP() << "fish is not installed";
    const struct {
        const char* line;
        Arguments completions;
    } facts[] = {
        {"kvx pl", {"play"}},
        {"kvx play --un", {"--unit"}},
        {"kvx play --unit ", {"time-pitch", "varispeed"}},
        {"kvx help re", {"render"}},
        {"kvx devices --wa", {"--watch"}},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.line);
        const auto result = support::runChild(
            {"fish", "--no-config", "-c", "source " + fish + "; complete -C '" + fact.line + "'"},
            {{"HOME", folder.path()}}, folder.path());
        EXPECT_EQ(result.exitCode, 0) << result.err;
        for (const std::string& word : fact.completions)
            EXPECT_NE(("\n" + result.out).find("\n" + word), std::string::npos) << result.out;
        EXPECT_EQ(lineCount(result.out), fact.completions.size()) << result.out;
    }
}

TEST_F(KvxHelp, FilesNameWhatTheyWrite)
{
    const auto result = run({"help", "--files", "more"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(lineCount(result.out), kvx::allCommands().size() + 4 + 3)
        << "a page per command and the program, completions, next steps";
    EXPECT_EQ(result.out.rfind("more/bash-completion/completions/kvx\n", 0), 0u) << result.out;
    const std::string more = folder / "more";
    const std::string nextSteps = "\nRead a page: `man -M " + more +
                                  "/man kvx-play`; to read pages without -M: `export MANPATH=" + more +
                                  "/man:` in ~/.profile.\n"
                                  "Complete in bash without the package bash-completion: `source " +
                                  more +
                                  "/bash-completion/completions/kvx` in ~/.bashrc.\n"
                                  "Complete in zsh: `fpath=(" +
                                  more + "/zsh/site-functions $fpath)` before compinit in ~/.zshrc.\n";
    EXPECT_EQ(result.out.substr(result.out.find("\nRead")), nextSteps);
    const auto refused = run({"help", "--files", "/dev/null/x"});
    EXPECT_EQ(refused.exitCode, 1);
    expectMessage(refused, "help");
}

TEST_F(KvxHelp, FilesGoToTheHomeFolderByDefault)
{
    const auto written = support::runChild(kvxCommand({"help", "--quiet", "--files"}),
                                           {{"HOME", folder.path()}}, folder.path());
    EXPECT_EQ(written.exitCode, 0) << written.err;
    EXPECT_EQ(bytesOf(folder / ".local/share/man/man1/kvx.1"), bytesOf(folder / "share/man/man1/kvx.1"));
    EXPECT_EQ(bytesOf(folder / ".local/" + bash), bytesOf(folder / bash));
}

// ---- the version, and the report for problems ----

TEST_F(KvxHelp, VersionNamesTheRevision)
{
    const auto result = run({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(result.out, parts,
                                 std::regex("kvx (\\d+\\.\\d+\\.\\d+)( \\(revision ([0-9a-f]{12})\\))?\n")))
        << result.out;
    const auto head = support::runChild(
        {"git", "-c", "safe.directory=*", "-C", KVX_SOURCE_DIR, "rev-parse", "--short=12", "HEAD"});
    EXPECT_EQ(parts[3].matched, head.exitCode == 0) << "without git, the version stands alone";
}

TEST_F(KvxHelp, VersionNeedsNoOtherArgument)
{
    const auto version = run({"--version"});
    for (const Arguments& arguments : {Arguments{"--version", "play"}, {"play", "--version"}}) {
        const auto result = run(arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out, version.out);
    }
}

TEST_F(KvxHelp, VerbosePrintsWhatAReportNeeds)
{
    runKvx({"tune", "--quiet", folder / "my song.wav"});
    const Arguments arguments = {"play", "--fast", "--host-version", "2013.03", "my song.wav"};
    const auto plain = run(arguments), verbose = run(joined(arguments, {"--verbose"}));
    EXPECT_EQ(verbose.exitCode, 0);
    EXPECT_EQ(verbose.out, plain.out);
    EXPECT_EQ(plain.err, "");
    EXPECT_EQ(verbose.err.rfind("kvx 0.", 0), 0u) << verbose.err;
    for (const char* part :
         {"\n  command        kvx play --fast --host-version 2013.03 'my song.wav' --verbose\n",
          "\n  system         Linux ", "\n  host version   2013.03\n",
          "\n  library        " KVX_BINARY_DIR "/KVXAudio.so\n",
          "\n  output device  Simulated Device (simulated), 44100 Hz, 2 channels, slices of 512 frames\n",
          "\n  libsndfile     1.", "\n  PortAudio      19.", "\n  file formats   wav, wave, ",
          ", opus, mp3, "})
        EXPECT_NE(verbose.err.find(part), std::string::npos) << part << verbose.err;
}

TEST_F(KvxHelp, VerboseReportsAfterAFailureAndWithoutACommand)
{
    const auto failed = run({"--verbose", "play", "missing.wav"});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(failed.err.rfind("kvx: play: missing.wav does not exist; ", 0), 0u) << failed.err;
    EXPECT_NE(failed.err.find("\n  command        kvx --verbose play missing.wav\n"), std::string::npos)
        << failed.err;
    const auto wrong = run({"play", "--verbose", "--bogus"});
    EXPECT_EQ(wrong.exitCode, 2);
    EXPECT_NE(wrong.err.find("\n  command        kvx play --verbose --bogus\n"), std::string::npos)
        << wrong.err;
    const auto alone = run({"--verbose"});
    EXPECT_EQ(alone.exitCode, 0);
    EXPECT_EQ(alone.out, "");
    EXPECT_NE(alone.err.find("\n  host version   2016\n"), std::string::npos) << alone.err;
}

} // namespace
