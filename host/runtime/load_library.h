// Loading of a plug-in library.
#pragma once

#include "abi/entry_point.h"

#include <string>

namespace host {

/// Load the plug-in library at `path`. The library stays loaded until the process ends.
/// Returns  the library's entry point, which the caller runs.
/// Errors   LoadError with the path, the problem and the next step.
/// [main]
REALPluginMainFunction loadLibrary(const std::string& path);

} // namespace host
