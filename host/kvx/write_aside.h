// Files that are written whole or not at all: under a name of their own first, then moved into place.
#pragma once

#include <string>

namespace kvx {

/// The name to write under, beside `path`; nothing stands there. Throws Failure when no file can be written
/// to `path`: what is in the way, and what to do. A file of that name stays as it is.
std::string asideOf(const std::string& path);

/// Give the finished file its name, in place of any earlier one. Throws Failure; then it is removed.
void moveIntoPlace(const std::string& aside, const std::string& path);

/// Remove the unfinished file and throw Failure: the disk took no more of it.
[[noreturn]] void giveUpWriting(const std::string& aside, const std::string& path);

} // namespace kvx
