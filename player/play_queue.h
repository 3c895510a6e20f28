// The play queue: a queue of fixed capacity inside the player's record, with the buffers that wait to be
// played.
//
// Invariant: slots 0 … queueCount - 1 hold data, and the other slots are empty. One lock, playQLock, serves
// all players. A thread holds the lock only to move or free slots, because the render thread may wait for the
// lock.
#pragma once

#include "player/player.h"

namespace player {

/// Append `item` to the queue; with `clearBuffers`, free all waiting buffers first. The current buffer keeps
/// playing.
/// Owner   the function takes the samples even if it fails, so `item` is empty on return.
/// Returns false if the queue is full or locking fails, after freeing the samples. Returns false, without any
///         change, for an item without samples.
/// [main]
bool AddToPlayList(AudioPlayerData& player, PlayItem& item, bool clearBuffers);

/// Move the first buffer of the queue into `current`, which must be empty, and reset outputPositionRelative
/// to 0. May wait for playQLock.
/// Returns false, without any change, if the queue is empty or locking fails.
/// [audio & running]
bool TakeNextPlayItem(AudioPlayerData& player);

/// Free all waiting buffers and the current buffer. If locking fails, free only the current buffer.
/// [main & stopped]
void FreeAllPlayItems(AudioPlayerData& player);

/// Return the number of empty slots, or 0 if locking fails.
/// [main]
std::int32_t freeSpace(AudioPlayerData& player);

} // namespace player
