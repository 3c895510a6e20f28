// The test signal, the input of all benchmarks: one minute of sound, identical in every run.
#pragma once

#include <cstddef>
#include <vector>

namespace bench {

constexpr double signalRate = 44100;
constexpr std::size_t signalFrames = 44100 * 60;

/// The test signal: chords of sines with some noise, interleaved, with 1 or 2 channels.
const std::vector<float>& testSignal(int channels);

/// The test signal in stereo, as one array of samples per channel.
const float* const* testSignalPlanes();

} // namespace bench
