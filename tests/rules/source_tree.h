// Lists and reads the files of the repository for the tests in this folder.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace rules {

/// Return the root folder of the repository. All paths in tests/rules are relative to the root folder.
std::filesystem::path root();

/// Return the sorted paths of all files, without files in the build and version-control folders.
std::vector<std::string> files();

/// Return whether the file name is that of a C or C++ source or header.
bool isSource(const std::string& path);

/// Return the whole content of a file.
std::string read(const std::string& path);

std::vector<std::string> lines(const std::string& text);

} // namespace rules
