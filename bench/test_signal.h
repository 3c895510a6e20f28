// The input signal of the benchmarks: one minute, identical in every run.
#pragma once

#include <cstddef>
#include <vector>

namespace bench {

constexpr double signalRate = 44100;
constexpr std::size_t signalFrames = 44100 * 60;

/// Chords of sines with some noise, interleaved, with 1 or 2 channels. The first call generates the signal.
const std::vector<float>& testSignal(int channels);

/// The two channels of `testSignal(2)`, not interleaved.
const float* const* testSignalPlanes();

} // namespace bench
