// The buffered player's interpolation as scalar code, for comparison with the product's SIMD code.
#pragma once

#include <cstdint>
#include <vector>

namespace bench {

/// A player with one buffer.
struct ScalarPlayer {
    explicit ScalarPlayer(const std::vector<float>& samples) : data(samples) {}

    const std::vector<float>& data; ///< interleaved samples, which must outlive the player
    std::int64_t base = 0;
    double position = 0;
    double relative = 0;
};

/// Render `frames` interleaved frames into `out`, which has the same number of channels as the data.
void renderMono(ScalarPlayer& player, double step, std::uint32_t frames, float* out);
void renderStereo(ScalarPlayer& player, double step, std::uint32_t frames, float* out);

} // namespace bench
