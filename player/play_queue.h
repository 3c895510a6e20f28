// The waiting buffers: a queue of fixed capacity inside the player's record.
//
// Invariant: slots 0 … queueCount - 1 hold data, the others are empty. One lock, playQLock, serves all
// players. It is held for slot moves and frees only, because the render thread waits for it.
#pragma once

#include "player/player.h"

namespace player {

/// Append `item`; with `clearBuffers`, replace all waiting buffers by it. The current buffer keeps playing.
/// Owner   takes the samples in every case: `item` is empty on return. An item without samples is unchanged.
/// Returns false, with the samples freed, if the queue is full or the lock fails; false without samples.
/// [main]
bool AddToPlayList(AudioPlayerData& player, PlayItem& item, bool clearBuffers);

/// Make the front of the queue current and restart outputPositionRelative. `current` must be empty.
/// Returns false, with nothing changed, if the queue is empty or the lock fails. Waits for the lock.
/// [audio & running]
bool TakeNextPlayItem(AudioPlayerData& player);

/// Free all waiting buffers and the current one; if the lock fails, only the current one.
/// [main & stopped]
void FreeAllPlayItems(AudioPlayerData& player);

/// Return the number of empty slots; 0 if the lock fails.
/// [main]
std::int32_t freeSpace(AudioPlayerData& player);

} // namespace player
