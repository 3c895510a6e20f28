// The interpolation of the buffered player as scalar code, for comparison with its SIMD code.
#pragma once

#include <cstdint>
#include <vector>

namespace bench {

/// The position of a player in its only buffer.
struct ScalarPlayer {
    explicit ScalarPlayer(const std::vector<float>& samples) : data(samples) {}

    const std::vector<float>& data; ///< interleaved samples, which the caller keeps alive
    std::int64_t base = 0;
    double position = 0;
    double relative = 0;
};

/// Render `frames` frames into `out`; `step` is the number of input frames per output frame.
/// Shape  1 channel in renderMono(), 2 interleaved channels in renderStereo().
void renderMono(ScalarPlayer& player, double step, std::uint32_t frames, float* out);
void renderStereo(ScalarPlayer& player, double step, std::uint32_t frames, float* out);

} // namespace bench
