// Loading of a plug-in library.
#pragma once

#include "abi/entry_point.h"

#include <string>

namespace host {

/// Load the library at `path`. The library stays loaded for the life of the process.
/// Returns  the library's entry point; the caller runs the entry point.
/// Throws   LoadError with the path, the problem and the next step.
/// [main]
REALPluginMainFunction loadLibrary(const std::string& path);

} // namespace host
