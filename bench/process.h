// Runs other programs.
#pragma once

#include <string>
#include <vector>

namespace bench {

using Words = std::vector<std::string>;

/// Run a command without output.
/// Returns  its processor time in seconds, or a negative number if it fails.
double processorSeconds(const Words& words);

/// Whether this machine has sox or ffmpeg.
bool hasSox();
bool hasFfmpeg();

Words join(Words words, const Words& rest);

/// Replace the words IN and OUT by paths.
Words withPaths(Words words, const std::string& in, const std::string& out);

} // namespace bench
