// Reads single samples by their index. The index counts samples from the start of the player.
#pragma once

#include "player/player.h"

namespace player {

/// Add with wrap-around. A position of not-a-number becomes the lowest index, and adding to or subtracting
/// from that index must not overflow.
/// [any]
inline std::int64_t wrappingAdd(std::int64_t a, std::int64_t b)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

/// Return the sample at `index`. An index past the current buffer frees that buffer and takes the next one.
/// May wait for the queue's lock, but only where a buffer ends.
/// Units   `index` counts samples, not frames; stereo data has two samples per frame.
/// Returns 0.0 if the index is before the current buffer, if there is no data, or if the index is past the
///         end of the next buffer, too, after a long step.
/// [audio & running]
float GetSample(AudioPlayerData& player, std::int64_t index);

} // namespace player
