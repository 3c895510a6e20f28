// Paths of this machine: from the root, and in the form that stands on the disk.
//
// A path is bytes, UTF-8 by custom. One that is not UTF-8 is as good as any, but has no other form.
#pragma once

#include <MacTypes.h>

#include <string>
#include <string_view>

namespace kvxplatform {

/// The path from the root: a relative one begins at the current folder. Without empty components, "." and a
/// slash at the end; ".." and links stay as they are. Empty for an empty path, one with a NUL, or if there is
/// no current folder any more. Throws std::bad_alloc.
std::string absolutePath(std::string_view path);

/// The same path as its item is named on the disk. The name of a file may be stored with composed letters or
/// with letters and their marks apart; who asks for it may have the other. A component that is there as given
/// is never exchanged; the others are looked for composed, then decomposed. The path as given if it is not
/// found so. Throws std::bad_alloc.
std::string pathOnDisk(const std::string& absolute);

/// The platform's code for what the system said (`errno`) about a path.
OSStatus statusOfError(int error);

} // namespace kvxplatform
