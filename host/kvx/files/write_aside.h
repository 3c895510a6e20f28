// Files that are written whole or not at all: under a name of their own first, then moved into place.
#pragma once

#include <string>
#include <vector>

namespace kvx {

/// Throws Failure if `path` is one of the files that are read meanwhile. `option`: where another is to be
/// named.
void refuseToOverwrite(const std::vector<std::string>& files, const std::string& path, const char* option);

/// The name to write under, beside `path`; nothing stands there. Throws Failure when no file can be written
/// to `path`: what is in the way, and what to do. A file of that name stays as it is.
std::string asideOf(const std::string& path);

/// Give the finished file its name, in place of any earlier one. Throws Failure; then it is removed.
void moveIntoPlace(const std::string& aside, const std::string& path);

/// Remove the unfinished file and throw Failure: a write failed. `error`: its errno, 0 if unknown.
[[noreturn]] void giveUpWriting(const std::string& aside, const std::string& path, int error);

/// Remove every file that still has the name asideOf() gave. [any], in a signal handler too
void removeUnfinishedFiles();

} // namespace kvx
