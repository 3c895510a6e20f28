// Atomic file replacement: a file is written to a temporary path, and then renamed to its final path.
// All functions except removeTemporaryFiles(): [main].
#pragma once

#include <string>
#include <vector>

namespace kvx {

/// Check that no file of `inputs` is the output file `path`. `option` is the option that names the output
/// file.
/// Errors  throws Failure.
void refuseToOverwrite(const std::vector<std::string>& inputs, const std::string& path, const char* option);

/// Choose an unused temporary path in the folder of `path`, and check that a file can be written there.
/// Errors  throws Failure with the reason and the next step if the check fails.
std::string temporaryPathFor(const std::string& path);

/// Rename the temporary file to `path`, and replace any former file.
/// Errors  removes the temporary file and throws Failure.
void moveIntoPlace(const std::string& temporary, const std::string& path);

/// Remove the temporary file after a failed write, and throw Failure. `error` is the errno of the write, 0 if
/// unknown.
[[noreturn]] void giveUpWriting(const std::string& temporary, const std::string& path, int error);

/// Remove every file at a path that temporaryPathFor() has returned. Signal handlers may call this function.
/// [any]
void removeTemporaryFiles();

} // namespace kvx
