// File references. Each holds the number of a path in a table that only grows, so nothing releases a
// reference, and the table's size is bounded by the number of different paths. All functions: [any].
#pragma once

#include <Carbon/Files.h>

#include <optional>
#include <string>

namespace kvxplatform::carbon {

/// Fill `ref` for the item at a path, by its stored name. Throws std::bad_alloc.
/// Errors  those of FSPathMakeRef; the out-parameters are unchanged then.
OSStatus makeReference(std::string_view path, FSRef& ref, bool& isFolder);

/// Throws std::bad_alloc.
/// Returns  the path of a reference; nothing for bytes that makeReference did not write.
std::optional<std::string> pathOf(const FSRef& ref);

} // namespace kvxplatform::carbon
