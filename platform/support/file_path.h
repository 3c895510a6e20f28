// Absolute paths, and path lookup by normal form. All functions: [any].
//
// A path is bytes, usually UTF-8. A path in another encoding is valid but has one form only.
#pragma once

#include <MacTypes.h>

#include <string>
#include <string_view>

namespace kvxplatform {

/// Make a path absolute, from the current folder. Removes empty components, "." and a slash at the end, but
/// keeps
/// ".." and links. Throws std::bad_alloc.
/// Returns  an empty path if `path` is empty or contains a NUL, or the current folder does not exist any
/// more.
std::string absolutePath(std::string_view path);

/// Find the stored name of an item whose letters may be stored composed or decomposed. Each component is
/// looked up as given, then composed, then decomposed. Throws std::bad_alloc. Returns  the given path if
/// there is no such item.
std::string pathOnDisk(const std::string& absolute);

/// The platform's status for an `errno` of a path.
OSStatus statusOfError(int error);

} // namespace kvxplatform
