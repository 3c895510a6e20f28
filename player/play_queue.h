// The waiting buffers: a queue of fixed capacity inside the player's record.
//
// Invariant: slots 0 … queueCount - 1 hold data, the rest are empty. One lock, playQLock, serves every
// player; it is held for slot moves and frees only, never for a conversion: the audio thread waits for it.
#pragma once

#include "player/player.h"

namespace player {

/// Append `item`, or, with `clearBuffers`, put it in place of all that waits. The buffer now playing goes on.
/// Owner   takes the samples whatever happens: `item` is empty on return. One that came without samples is
///         left as it is.
/// Thread  [main].
/// Returns false, with the samples freed, when the queue is full or the lock fails; false for no samples.
bool AddToPlayList(AudioPlayerData& player, PlayItem& item, bool clearBuffers);

/// Make the front of the queue current, and restart outputPositionRelative. `current` must be empty.
/// Thread  [audio & running]. Waits for the lock; allocates nothing; moves the occupied slots only.
/// Returns false when nothing waits or the lock fails; nothing is changed then.
bool TakeNextPlayItem(AudioPlayerData& player);

/// Free everything that waits, and the current buffer. If the lock fails, the current buffer only.
/// Thread  [main & stopped].
void FreeAllPlayItems(AudioPlayerData& player);

/// Empty slots; 0 when the lock fails. [main]
std::int32_t freeSpace(AudioPlayerData& player);

} // namespace player
