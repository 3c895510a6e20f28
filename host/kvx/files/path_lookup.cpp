#include "host/kvx/files/path_lookup.h"

#include <Carbon/Carbon.h>

#include <climits>
#include <filesystem>

namespace kvx {

std::string pathOnDisk(const std::string& path)
{
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored)) return path;
    FSRef item;
    UInt8 found[PATH_MAX];
    const bool isFound =
        FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &item, nullptr) == noErr &&
        FSRefMakePath(&item, found, sizeof found) == noErr;
    return isFound ? reinterpret_cast<const char*>(found) : path;
}

} // namespace kvx
