// Absolute paths, and path lookup by Unicode normal form.
//
// A path is a sequence of bytes, usually UTF-8. A path in another encoding is valid, but is looked up only as
// given.
// All functions: [any].
#pragma once

#include <MacTypes.h>

#include <string>
#include <string_view>

namespace kvxplatform {

/// Make a path absolute. Remove empty components, "." components and a slash at the end, but keep ".." and
/// symbolic links. Throws std::bad_alloc.
/// Returns  an empty path if `path` is empty or contains a NUL byte, or if the process has no current folder.
std::string absolutePath(std::string_view path);

/// Find an item whose name may be stored with composed or decomposed letters. Each component of the path is
/// looked up as given, then composed, then decomposed. Throws std::bad_alloc.
/// Returns  the path with the names that the disk stores; the given path if there is no such item.
std::string pathOnDisk(const std::string& absolute);

/// Returns  the platform's status for an `errno` value of a system call with a path.
OSStatus statusOfError(int error);

} // namespace kvxplatform
