#include "bench/scalar_player.h"

namespace bench {
namespace {

float sampleAt(const ScalarPlayer& player, std::int64_t index)
{
    const std::int64_t relative = index - player.base;
    if (relative < 0 || relative >= static_cast<std::int64_t>(player.data.size())) return 0;
    return player.data[static_cast<std::size_t>(relative)];
}

} // namespace

void renderMono(ScalarPlayer& player, double step, std::uint32_t frames, float* out)
{
    std::int64_t last = -1;
    float s0 = 0, s1 = 0;
    for (std::uint32_t i = 0; i < frames; ++i) {
        const auto k = static_cast<std::int64_t>(player.position);
        if (k != last) {
            s0 = sampleAt(player, k);
            s1 = sampleAt(player, k + 1);
            last = k;
        }
        player.relative += step;
        const double t = player.position - static_cast<double>(k);
        out[i] = static_cast<float>(s1 * t + (1.0 - t) * s0);
        player.position += step;
    }
}

void renderStereo(ScalarPlayer& player, double step, std::uint32_t frames, float* out)
{
    std::int64_t last = -1;
    float left0 = 0, right0 = 0, left1 = 0, right1 = 0;
    for (std::uint32_t i = 0; i < frames; ++i) {
        const auto k = static_cast<std::int64_t>(player.position);
        if (k != last) {
            left0 = sampleAt(player, 2 * k);
            right0 = sampleAt(player, 2 * k + 1);
            left1 = sampleAt(player, 2 * k + 2);
            right1 = sampleAt(player, 2 * k + 3);
            last = k;
        }
        player.relative += step;
        const auto t = static_cast<float>(player.position - static_cast<double>(k));
        out[2 * i] = t * left1 + (1.0f - t) * left0;
        out[2 * i + 1] = t * right1 + (1.0f - t) * right0;
        player.position += step;
    }
}

} // namespace bench
