#include "platform/audiounit/rate/splice.h"

#include <algorithm>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 mostFrames = 512;

Float32 difference(const Float32* a, const Float32* b, UInt32 frames)
{
    Float32 sum[4] = {};
    UInt32 i = 0;
    for (; i + 4 <= frames; i += 4)
        for (UInt32 lane = 0; lane < 4; ++lane)
            sum[lane] += (a[i + lane] - b[i + lane]) * (a[i + lane] - b[i + lane]);
    return sum[0] + sum[1] + sum[2] + sum[3];
}

} // namespace

std::int64_t bestSplice(const InputTape& tape, std::int64_t frame, const Float32* const* heard, UInt32 frames)
{
    frames = std::min(frames, mostFrames);
    const std::int64_t from = std::max(frame - spliceReach, tape.begin());
    const std::int64_t until = std::min(frame + spliceReach + frames, tape.end());
    if (frames < leastSpliceFrames || from > frame || until < frame + frames) return frame;

    Float32 near[2][mostFrames + 2 * spliceReach];
    const UInt32 channels = std::min<UInt32>(tape.channels(), 2);
    for (UInt32 channel = 0; channel < channels; ++channel)
        tape.copyChannel(channel, from, static_cast<UInt32>(until - from), near[channel]);

    const auto differenceAt = [&](std::int64_t at) {
        Float32 sum = 0;
        for (UInt32 channel = 0; channel < channels; ++channel)
            sum += difference(near[channel] + (at - from), heard[channel], frames);
        return sum;
    };
    // From the middle outwards: of two that are equally good the nearer one.
    std::int64_t best = frame;
    Float32 least = differenceAt(frame);
    for (std::int64_t away = 1; away <= spliceReach; ++away)
        for (const std::int64_t at : {frame - away, frame + away}) {
            if (at < from || at + frames > until) continue;
            const Float32 found = differenceAt(at);
            if (found < least) least = found, best = at;
        }
    return best;
}

} // namespace kvxplatform::audiounit
