// File references. Each reference holds the number of a path in a table of all different paths. The table
// only grows, so a reference needs no release. All functions: [any].
#pragma once

#include <Carbon/Files.h>

#include <optional>
#include <string>

namespace kvxplatform::carbon {

/// Make a reference to the file or folder at a path. The reference holds the path as stored on disk. Throws
/// std::bad_alloc.
/// Errors  those of FSPathMakeRef(); after an error the out-parameters are unchanged.
OSStatus makeReference(std::string_view path, FSRef& ref, bool& isFolder);

/// Get the path of a reference. Throws std::bad_alloc.
/// Returns  nothing for bytes that makeReference() did not write.
std::optional<std::string> pathOf(const FSRef& ref);

} // namespace kvxplatform::carbon
