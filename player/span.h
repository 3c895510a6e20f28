// Which output frames can be interpolated at once.
//
// Reading moves a position by one step per frame. A span computes its positions by multiplication instead,
// which gives the same numbers only while no sum is rounded.
#pragma once

#include "player/interpolation.h"
#include "player/player.h"

namespace player {

constexpr UInt32 largestSpan = 512; ///< frames

/// Return the number of steps from `position` whose sums are exact: multiplication gives the same sums.
/// Shape   `step` is a float, widened.
/// Returns `frames`, at most 4096, if `position` is a multiple of the unit in the last place of `step` and
///         below 2^52 of these units; otherwise 0.
/// [any]
UInt32 exactFrames(double position, double step, UInt32 frames);

/// Return how many frames of the span have both neighbours among the first `count` frames of its data.
/// Shape   the position is not negative, and the step is above 0.
/// [any]
UInt32 framesInside(const Span& span, std::int32_t count);

/// Return the span of at most `frames` frames from `position` inside the current buffer.
/// Shape   at most `largestSpan` frames; none where a neighbour is in another buffer, or where positions are
///         not exact. samplesPerFrame is 1 or 2.
/// [audio & running]
Span spanAt(const AudioPlayerData& player, double position, double step, UInt32 frames,
            std::int32_t samplesPerFrame);

} // namespace player
