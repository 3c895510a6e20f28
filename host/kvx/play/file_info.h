// What the class of the file player tells of a file.
#pragma once

#include "host/kvx/play/programme.h"
#include "host/kvx/terminal/progress.h"
#include "host/runtime/host.h"

#include <string>

namespace kvx {

/// Load the file and print the formats as the class gives them, rate, duration and the file's channels: a
/// line each. Throws Failure. [main]
std::string printFileInfo(host::Host& host, const ProgrammeFile& file, Progress& progress);

} // namespace kvx
