// The C++ in the documentation is a part of programs in examples/, and these programs run.
#include "tests/endtoend/documentation/markdown.h"
#include "tests/support/child_process.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace endtoend;

/// The programs whose code the documentation shows, and their output.
const struct Example {
    const char* name;
    std::vector<std::string> arguments;
    const char* output;
} examples[] = {
    {"guide", {"sound.wav", KVX_BINARY_DIR "/KVXAudio.so"}, "0.5 of 0.5 s\n0.0 of 0.5 s\nloops\n"},
    {"tone", {KVX_BINARY_DIR "/KVXAudio.so"}, "played 88576 frames\n"}, // 173 slices of 512 frames
};

std::string nameOfProgramWith(const std::string& code)
{
    for (const Example& each : examples) {
        const std::string source = readDocument("examples/" + std::string(each.name) + ".cpp");
        if (source.find("\n" + code) != source.npos) return each.name;
    }
    return "";
}

TEST(DocumentedCpp, IsPartOfTheExamples)
{
    std::set<std::string> shown;
    for (const std::string& document : userDocuments())
        for (const CodeBlock& block : codeBlocks(readDocument(document))) {
            if (block.language != "cpp") continue;
            const std::string name = nameOfProgramWith(block.text);
            EXPECT_NE(name, "") << document << " shows code that is in no example:\n" << block.text;
            shown.insert(name);
        }
    EXPECT_EQ(shown, (std::set<std::string>{"guide", "tone"}));
}

TEST(DocumentedCpp, Runs)
{
    const support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 2, 22050), folder / "sound.wav");
    for (const Example& each : examples) {
        SCOPED_TRACE(each.name);
        std::vector<std::string> command = {std::string(KVX_BINARY_DIR "/examples/") + each.name};
        command.insert(command.end(), each.arguments.begin(), each.arguments.end());
        const support::ChildResult result = support::runChild(command, {}, folder.path());
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.out, each.output);
        EXPECT_EQ(result.err, "") << "leaks, or an error";
    }
}

} // namespace
