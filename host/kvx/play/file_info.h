// What `kvx play --info` prints: the details of files, and their formats as the library reports them.
// All functions: [main].
#pragma once

#include "host/kvx/play/playlist.h"
#include "host/runtime/host.h"

#include <string>
#include <vector>

namespace kvx {

/// Load each file into a file player, and describe the files.
/// Returns  lines of text per file, or with `isJson` an array with an object per file.
/// Errors   throws Failure.
std::string describeFiles(host::Host& host, const std::vector<PlaylistFile>& files, bool isJson,
                          Progress& progress);

} // namespace kvx
