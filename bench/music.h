// Sound to work on: a minute of it, the same in every run.
#pragma once

#include <cstddef>
#include <vector>

namespace bench {

constexpr double musicRate = 44100;
constexpr std::size_t musicFrames = 44100 * 60;

/// Interleaved, 1 or 2 channels: chords that move, under a little noise. Made once.
const std::vector<float>& music(int channels);

/// The two channels of `music(2)`, apart.
const float* const* musicPlanes();

} // namespace bench
