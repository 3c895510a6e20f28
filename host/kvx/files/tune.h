// Synthesises a short tune, for users who have no sound file.
// All functions: [main].
#pragma once

#include <string>
#include <vector>

namespace kvx {

constexpr int tuneSampleRate = 44100;
constexpr int tuneChannels = 2;

/// Synthesise the tune. The peak is below full scale, and both ends are silent.
/// Shape  interleaved stereo at tuneSampleRate.
std::vector<float> composeTune();

/// Write the tune to a 16-bit WAV file.
/// Errors  throws Failure; a file that exists at `path` then stays unchanged.
void writeTune(const std::string& path);

} // namespace kvx
