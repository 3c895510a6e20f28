// Reading single samples by their index on the time line that begins at 0 with each start.
#pragma once

#include "player/player.h"

namespace player {

/// Add with wrap-around: a position of not-a-number is the lowest index; its neighbours stay defined.
/// [any]
inline std::int64_t wrappingAdd(std::int64_t a, std::int64_t b)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

/// Return the sample at `index`. An index past the current buffer frees that buffer and takes the next one.
/// Units   samples, not frames: two per frame for stereo.
/// Returns 0.0 before the current buffer, without data, and past the next buffer (a long step).
///         Waits for the queue's lock only where a buffer ends.
/// [audio & running]
float GetSample(AudioPlayerData& player, std::int64_t index);

} // namespace player
