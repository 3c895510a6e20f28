// The files of the repository, as the tests in this folder read them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace rules {

/// The root folder of the repository. Paths in this folder's functions are relative to it.
std::filesystem::path root();

/// The paths of all files, sorted, without those in the build and version-control folders.
std::vector<std::string> files();

/// True for C and C++ sources and headers, by file name.
bool isSource(const std::string& path);

/// The whole content of a file.
std::string read(const std::string& path);

std::vector<std::string> lines(const std::string& text);

} // namespace rules
