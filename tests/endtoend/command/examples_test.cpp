// The examples in the help of each command, run as a user would paste them.
#include "host/kvx/commands.h"
#include "tests/endtoend/command/kvx_runner.h"

#include <set>

namespace {

using namespace endtoend;

// Examples that end otherwise than with success.
const struct {
    const char* command;
    int exitCode;
} failures[] = {
    {"kvx soundstream --development song.wav", 1}, // refused, as the help says
};

// Options of examples that play or watch until Ctrl-C.
const char* const endless[] = {"kvx play --loop", "--watch"};

std::vector<std::string> commandNames()
{
    std::vector<std::string> names;
    for (const kvx::Command& command : kvx::allCommands()) names.push_back(command.name);
    names.push_back(""); // the program itself
    return names;
}

kvx::Command commandNamed(const std::string& name)
{
    for (const kvx::Command& command : kvx::allCommands())
        if (command.name == name) return command;
    return kvx::program();
}

std::set<std::string> examplesOf(const kvx::Command& command)
{
    std::set<std::string> examples;
    for (const kvx::OptionGroup& group : command.groups)
        for (const kvx::Option& option : group.options) examples.insert(exampleOf(command, option));
    examples.erase("");
    return examples;
}

/// The example, with the option --fast if it plays to a device.
std::string faster(std::string example)
{
    for (const std::string start : {"kvx play ", "kvx soundstream "})
        if (example.rfind(start, 0) == 0 && example.find("--fast") == example.npos)
            example.insert(start.size(), "--fast ");
    return example;
}

struct KvxExamples : testing::TestWithParam<std::string> {
    support::TemporaryFolder folder;

    KvxExamples()
    {
        runKvx({"tune", "--quiet", folder / "song.wav"});
        std::filesystem::copy_file(folder / "song.wav", folder / "more.wav");
        std::filesystem::create_symlink(KVX_BINARY_DIR "/KVXAudio.so", folder / "KVXAudio.so");
    }
    support::Child start(const std::string& example) const
    {
        return support::Child({"sh", "-c", "PATH=" KVX_BINARY_DIR ":$PATH; exec " + example},
                              {{"HOME", folder.path()}}, folder.path());
    }
};

TEST_P(KvxExamples, RunAsTheHelpShowsThem)
{
    for (const std::string& example : examplesOf(commandNamed(GetParam()))) {
        SCOPED_TRACE(example);
        const bool isEndless = std::any_of(std::begin(endless), std::end(endless), [&](const char* part) {
            return example.find(part) != example.npos;
        });
        support::Child child = start(faster(example));
        while (isEndless && child.isRunning() && child.outSoFar().find('\n') == std::string::npos)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (isEndless) child.send(SIGINT);
        const auto result = child.wait();

        int expected = isEndless ? 130 : 0;
        for (const auto& failure : failures)
            if (example == failure.command) expected = failure.exitCode;
        EXPECT_EQ(result.exitCode, expected) << result.out << result.err;
        const bool isReportWanted = example.find("--verbose") != example.npos;
        EXPECT_EQ(result.err.empty(), expected != 1 && !isReportWanted) << result.err;
    }
}

INSTANTIATE_TEST_SUITE_P(Of, KvxExamples, testing::ValuesIn(commandNames()), [](const auto& info) {
    return info.param.empty() ? std::string("program") : info.param;
});

} // namespace
