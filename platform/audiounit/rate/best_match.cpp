#include "platform/audiounit/rate/best_match.h"

#include <algorithm>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 maxFrames = 512;

Float32 squaredDifference(const Float32* a, const Float32* b, UInt32 frames)
{
    Float32 sum[4] = {}; // four separate sums become SIMD lanes
    UInt32 i = 0;
    for (; i + 4 <= frames; i += 4)
        for (UInt32 lane = 0; lane < 4; ++lane)
            sum[lane] += (a[i + lane] - b[i + lane]) * (a[i + lane] - b[i + lane]);
    return sum[0] + sum[1] + sum[2] + sum[3];
}

} // namespace

std::int64_t bestMatch(const InputHistory& history, std::int64_t frame, const Float32* const* output,
                       UInt32 frames)
{
    frames = std::min(frames, maxFrames);
    const std::int64_t begin = std::max(frame - matchReach, history.begin());
    const std::int64_t end = std::min(frame + matchReach + frames, history.end());
    if (frames < minMatchFrames || begin > frame || end < frame + frames) return frame;

    Float32 input[2][maxFrames + 2 * matchReach];
    const UInt32 channels = std::min<UInt32>(history.channels(), 2);
    for (UInt32 channel = 0; channel < channels; ++channel)
        history.copyChannel(channel, begin, static_cast<UInt32>(end - begin), input[channel]);

    const auto differenceAt = [&](std::int64_t position) {
        Float32 sum = 0;
        for (UInt32 channel = 0; channel < channels; ++channel)
            sum += squaredDifference(input[channel] + (position - begin), output[channel], frames);
        return sum;
    };
    // Search from the middle outwards, so that the nearer of two equal matches is found.
    std::int64_t best = frame;
    Float32 least = differenceAt(frame);
    for (std::int64_t distance = 1; distance <= matchReach; ++distance)
        for (const std::int64_t position : {frame - distance, frame + distance}) {
            if (position < begin || position + frames > end) continue;
            const Float32 difference = differenceAt(position);
            if (difference < least) least = difference, best = position;
        }
    return best;
}

} // namespace kvxplatform::audiounit
