// What is inside a file reference: the number of a path. A path that was once referred to is kept for as long
// as the program lives, so that a reference is a value that nobody has to release; the memory is bounded by
// the number of different paths.
#pragma once

#include <Carbon/Files.h>

#include <optional>
#include <string>

namespace kvxplatform::carbon {

/// Fill `ref` for the item at a path, under the name that it has on the disk, and say whether it is a folder.
/// Errors  as FSPathMakeRef; nothing is written then. Throws std::bad_alloc. Thread [any].
OSStatus makeReference(std::string_view path, FSRef& ref, bool& isFolder);

/// Nothing for a reference that none of our functions filled. Throws std::bad_alloc. Thread [any].
std::optional<std::string> pathOf(const FSRef& ref);

} // namespace kvxplatform::carbon
