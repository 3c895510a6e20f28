// The program kvx, run as a child process.
#pragma once

#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
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
};

} // namespace endtoend
