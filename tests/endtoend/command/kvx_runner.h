// The program kvx, run as a child process.
#pragma once

#include "tests/support/child_process.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace endtoend {

using Arguments = std::vector<std::string>;

inline const char* const kvxPath = KVX_BINARY_DIR "/kvx";

inline Arguments joined(Arguments arguments, const Arguments& more)
{
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

/// Return a command line: the path of kvx, then `arguments`.
inline Arguments kvxCommand(const Arguments& arguments) { return joined({kvxPath}, arguments); }

inline support::ChildResult runKvx(const Arguments& arguments, const std::string& folder = "")
{
    return support::runChild(kvxCommand(arguments), {}, folder);
}

/// Return the lines of a text. The last line may lack the newline.
inline std::size_t lineCount(const std::string& text)
{
    const auto ended = std::size_t(std::count(text.begin(), text.end(), '\n'));
    return ended + (!text.empty() && text.back() != '\n');
}

/// Expect that kvx printed one message: one line with the command, the problem and the next step. `command`
/// is empty for a message that belongs to no command.
inline void expectMessage(const support::ChildResult& result, const std::string& command)
{
    EXPECT_EQ(lineCount(result.err), 1u) << result.err;
    EXPECT_EQ(result.err.rfind("kvx: " + command + (command.empty() ? "" : ": "), 0), 0u) << result.err;
    const std::size_t nextStep = result.err.rfind("; ");
    EXPECT_TRUE(nextStep != std::string::npos && nextStep + 3 < result.err.size())
        << "without a next step: " << result.err;
}

inline std::string bytesOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// The base of tests that run kvx in a temporary folder.
struct KvxTest : testing::Test {
    support::TemporaryFolder folder;

    support::ChildResult run(const Arguments& arguments) const { return runKvx(arguments, folder.path()); }

    /// Return the unfinished output files, which kvx renames when they are complete.
    std::vector<std::filesystem::path> unfinishedFiles() const
    {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
            if (entry.path().extension() == ".part") paths.push_back(entry.path());
        return paths;
    }

    /// Return the size of the largest unfinished output file, or 0 without such a file.
    std::uintmax_t unfinishedBytes() const
    {
        std::uintmax_t largest = 0;
        for (const auto& path : unfinishedFiles()) {
            std::error_code renamed;
            const auto size = std::filesystem::file_size(path, renamed);
            if (!renamed) largest = std::max(largest, size);
        }
        return largest;
    }

    /// Stop a command that captures `sound` in out.wav, by each signal after one second of sound. Expect the
    /// exit code of the signal, and the start of the sound between silence in the capture. The samples of
    /// `sound` are not zero.
    void expectSignalsFinishTheCapture(const Arguments& command, const support::Sound& sound) const
    {
        const struct {
            int signal, exitCode;
        } facts[] = {{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}};
        const std::size_t filesBefore = folder.count();
        for (const auto& fact : facts) {
            SCOPED_TRACE(fact.signal);
            support::Child child(kvxCommand(command), {}, folder.path());
            // One second is longer than the silence at the start of the capture.
            while (child.isRunning() && unfinishedBytes() < 44100 * 2 * sizeof(float))
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            child.send(fact.signal);
            const auto result = child.wait();
            EXPECT_EQ(result.exitCode, fact.exitCode);
            EXPECT_EQ(result.err, "");
            EXPECT_NE(result.out.find("Stopped."), std::string::npos) << result.out;
            EXPECT_EQ(folder.count(), filesBefore + 1);

            const support::Sound captured = support::readSound(folder / "out.wav");
            const auto first =
                captured.samples.begin() + std::ptrdiff_t(support::leadingSilence(captured) * 2);
            const auto end = std::find(first, captured.samples.end(), 0.0f);
            EXPECT_GT(end - first, 1000) << "the capture has sound";
            EXPECT_LT(captured.frames(), sound.frames());
            EXPECT_TRUE(std::equal(first, end, sound.samples.begin())) << "the start of the sound";
            EXPECT_TRUE(std::all_of(end, captured.samples.end(), [](float sample) { return sample == 0; }));
            std::filesystem::remove(folder / "out.wav");
        }
    }
};

} // namespace endtoend
