// A short tune for users without a sound file.
// All functions: [main].
#pragma once

#include <string>
#include <vector>

namespace kvx {

constexpr int tuneSampleRate = 44100;
constexpr int tuneChannels = 2;

/// Synthesise the tune: interleaved stereo at tuneSampleRate, peak below full scale, silent at both ends.
std::vector<float> composeTune();

/// Write the tune to a 16-bit WAV file.
/// Errors  throws Failure and leaves a former file unchanged.
void writeTune(const std::string& path);

} // namespace kvx
