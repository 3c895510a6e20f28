// Atomic file replacement: a file is written to a temporary path, then renamed to the final path. If the
// final path is a symbolic link, the file that the link names is replaced, and the link stays.
// All functions except removeTemporaryFiles(): [main].
#pragma once

#include "host/kvx/text/failure.h"

#include <string>
#include <vector>

namespace kvx {

/// Check that the output file `path` is none of the input files. The error message names `option`, the option
/// with the output path.
/// Errors  throws Failure.
void refuseToOverwrite(const std::vector<std::string>& inputs, const std::string& path, const char* option);

/// Choose an unused temporary path, NAME.PROCESS.part, in the folder of the file at `path`, and check that a
/// file can be written there. Files that ended processes left at such paths are removed.
/// Errors  throws Failure with the reason and the next step if the check fails.
std::string temporaryPathFor(const std::string& path);

/// Rename the temporary file to `path`. A file that exists at `path` is replaced, and its permissions are
/// kept.
/// Errors  removes the temporary file and throws Failure.
void moveIntoPlace(const std::string& temporary, const std::string& path);

/// Make the error that `path` cannot be written, with the next step. `error` is a value of errno.
Failure cannotWrite(const std::string& path, int error);

/// The folder for files that end with the command: the value of TMPDIR, or /tmp.
std::string temporaryFolder();

/// Make the error that `what` cannot be kept in temporaryFolder(). `error` is a value of errno.
Failure cannotKeep(const std::string& what, int error);

/// Choose the files or empty folders that removeTemporaryFiles() also removes, in this order. The paths must
/// belong to this process only.
void removeAtTheEnd(const std::vector<std::string>& paths);

/// Remove the temporary file after a failed write, and throw Failure. `error` is the value of errno after the
/// write; 0 if unknown.
[[noreturn]] void giveUpWriting(const std::string& temporary, const std::string& path, int error);

/// Remove the files at the temporary paths that temporaryPathFor() has returned, and the paths of
/// removeAtTheEnd(), but no more than the first eight paths. Signal handlers may call this function.
/// [any]
void removeTemporaryFiles();

} // namespace kvx
