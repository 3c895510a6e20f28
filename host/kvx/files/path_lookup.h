// A path as the disk spells it.
#pragma once

#include <string>

namespace kvx {

/// The disk may store an accented letter composed or decomposed, other than the user types it. Returns `path`
/// itself where it exists or nothing matches it, else the absolute path of the item that the platform finds.
std::string pathOnDisk(const std::string& path);

} // namespace kvx
