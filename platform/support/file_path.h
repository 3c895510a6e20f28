// Absolute paths, and path lookup by normal form. All functions: [any].
//
// A path is bytes, usually UTF-8. A path in another encoding is valid but has one form only.
#pragma once

#include <MacTypes.h>

#include <string>
#include <string_view>

namespace kvxplatform {

/// Make a path absolute. Removes empty components, "." and a slash at the end, but keeps ".." and links.
/// Throws std::bad_alloc.
/// Returns  an empty path if `path` is empty or contains a NUL, or if there is no current folder.
std::string absolutePath(std::string_view path);

/// Find an item whose name may be stored with composed or decomposed letters. Each component is looked up as
/// given, then composed, then decomposed. Throws std::bad_alloc.
/// Returns  the path by stored names; the given path if there is no such item.
std::string pathOnDisk(const std::string& absolute);

/// The platform's status for an `errno` of a path.
OSStatus statusOfError(int error);

} // namespace kvxplatform
