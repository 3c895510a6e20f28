// The command `kvx doctor`: reports what playback depends on, what is a problem, and what helps.
// All functions: [main].
#pragma once

#include "host/kvx/library/library.h"

namespace kvx {

struct DoctorOptions {
    bool isJson = false;
    LibraryOptions library;
};

/// Print a line, or a JSON object, for each check.
/// Returns  the exit code: 0 if `kvx play` can play, 1 if not.
int runDoctor(const DoctorOptions& options);

} // namespace kvx
