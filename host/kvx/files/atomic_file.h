// Atomic file replacement: a file is written to a temporary path, then renamed to the final path.
// All functions except removeTemporaryFiles(): [main].
#pragma once

#include <string>
#include <vector>

namespace kvx {

/// Check that the output file `path` is none of the input files. The error message names `option`, the option
/// with the output path.
/// Errors  throws Failure.
void refuseToOverwrite(const std::vector<std::string>& inputs, const std::string& path, const char* option);

/// Choose an unused temporary path in the folder of `path`, and check that a file can be written there.
/// Errors  throws Failure with the reason and the next step if the check fails.
std::string temporaryPathFor(const std::string& path);

/// Rename the temporary file to `path`. A file that exists at `path` is replaced.
/// Errors  removes the temporary file and throws Failure.
void moveIntoPlace(const std::string& temporary, const std::string& path);

/// Remove the temporary file after a failed write, and throw Failure. `error` is the value of errno after the
/// write; 0 if unknown.
[[noreturn]] void giveUpWriting(const std::string& temporary, const std::string& path, int error);

/// Remove the files at the first four temporary paths that temporaryPathFor() has returned, and the
/// unfinished captures to these paths. Signal handlers may call this function.
/// [any]
void removeTemporaryFiles();

} // namespace kvx
