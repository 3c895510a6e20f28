// What `--verbose` prints, for reports of problems.
// All functions: [main].
#pragma once

#include "host/kvx/library/library.h"

#include <string>

namespace kvx {

/// Describe the program, the command line, the system, the library, the output device, the loaded libraries
/// and the readable formats, one per line. The call starts the sound system, unless the command has done so.
/// `version` is the version of the program.
std::string problemReport(const std::string& version, int argumentCount, const char* const* arguments,
                          const LibraryOptions& options);

} // namespace kvx
