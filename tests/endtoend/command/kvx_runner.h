// The command, as a user calls it.
#pragma once

#include "tests/support/child_process.h"

#include <string>
#include <vector>

namespace endtoend {

inline const char* const kvxPath = KVX_BINARY_DIR "/kvx";

inline std::vector<std::string> kvxCommand(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), kvxPath);
    return arguments;
}

inline support::ChildResult runKvx(const std::vector<std::string>& arguments, const std::string& folder = "")
{
    return support::runChild(kvxCommand(arguments), {}, folder);
}

/// Lines of a text, the last one ended or not.
inline std::size_t lineCount(const std::string& text)
{
    std::size_t count = !text.empty() && text.back() != '\n';
    for (char c : text) count += c == '\n';
    return count;
}

} // namespace endtoend
