// A short tune of our own making, for those who have no sound file at hand.
#pragma once

#include <string>
#include <vector>

namespace kvx {

constexpr int tuneSampleRate = 44100;
constexpr int tuneChannels = 2;

/// The tune: interleaved stereo at tuneSampleRate, peak below full scale, silent at both ends.
std::vector<float> composeTune();

/// Write it as a 16-bit WAV. Throws Failure; an earlier file is then as it was.
void writeTune(const std::string& path);

} // namespace kvx
