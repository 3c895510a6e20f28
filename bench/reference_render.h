// The buffered player's arithmetic, one value after the other: what its lanes are measured against. Compiled
// with the product's own flags.
#pragma once

#include <cstdint>
#include <vector>

namespace bench {

/// A player with one buffer, read sample by sample.
struct PlainPlayer {
    explicit PlainPlayer(const std::vector<float>& samples) : data(samples) {}

    const std::vector<float>& data; // interleaved; outlives the player
    std::int64_t base = 0;
    double position = 0;
    double relative = 0;
};

/// Render `frames` frames into `out`, which has as many channels as the data, interleaved.
void renderMonoPlainly(PlainPlayer& player, double step, std::uint32_t frames, float* out);
void renderStereoPlainly(PlainPlayer& player, double step, std::uint32_t frames, float* out);

} // namespace bench
