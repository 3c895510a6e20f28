// Finds spans: consecutive output frames that can be interpolated in one call.
//
// Frame-by-frame rendering adds one step per frame to the position. A span computes its positions by
// multiplication instead, which gives the same positions only if no sum is rounded.
#pragma once

#include "player/interpolation.h"
#include "player/player.h"

namespace player {

constexpr UInt32 largestSpan = 512; ///< largest number of frames in a span

/// Return how many steps can be added to `position` without rounding, so that multiplication gives the same
/// sums.
/// Shape   `step` is a float converted to double.
/// Returns `frames`, limited to 4096, if `position` is a multiple of the unit in the last place of `step` and
///         below 2^52 of these units; otherwise 0.
/// [any]
UInt32 exactFrames(double position, double step, UInt32 frames);

/// Return how many output frames of the span certainly have both neighbours among the first `count` frames of
/// its samples. The result may be one frame too small.
/// Shape   the span's position is not negative, and its step is above 0.
/// [any]
UInt32 framesInside(const Span& span, std::int32_t count);

/// Return a span of at most `frames` and at most `largestSpan` frames that begins at `position` and lies
/// inside the current buffer. The span has no frames if a neighbour of the first frame is in another buffer,
/// or if the positions would be rounded.
/// Shape   samplesPerFrame is 1 or 2.
/// [audio & running]
Span spanAt(const AudioPlayerData& player, double position, double step, UInt32 frames,
            std::int32_t samplesPerFrame);

} // namespace player
