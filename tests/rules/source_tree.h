// The tracked text of the tree, as the rule tests read it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace rules {

/// Where the tree stands.
std::filesystem::path top();

/// Every file below `top()` but the build and version-control folders, as paths from the top, sorted.
std::vector<std::string> files();

/// True for C and C++ sources and headers, by name.
bool isSource(const std::string& path);

/// The whole of a file, by its path from the top.
std::string read(const std::string& path);

std::vector<std::string> lines(const std::string& text);

} // namespace rules
