#include "player/play_queue.h"

#include "plugin/mutex_lock.h"
#include "plugin/shared_word.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <pthread.h>

namespace player {

namespace {

pthread_mutex_t playQLock = PTHREAD_MUTEX_INITIALIZER;

void freeItem(PlayItem& item)
{
    std::free(item.data);
    item = {};
}

/// Move `item` into the first empty slot. Returns false if no slot is empty or locking fails.
bool enqueue(AudioPlayerData& player, PlayItem& item, bool clearBuffers)
{
    const MutexLock lock(&playQLock);
    if (!lock) return false;

    while (clearBuffers && player.queueCount > 0) freeItem(player.queue[--player.queueCount]);
    if (player.queueCount >= queueCapacity) return false;
    PlayItem* const slot = std::find_if(std::begin(player.queue), std::end(player.queue),
                                        [](const PlayItem& each) { return !each.data; });
    if (slot == std::end(player.queue)) return false;
    *slot = item;
    ++player.queueCount;
    item = {};
    return true;
}

} // namespace

bool AddToPlayList(AudioPlayerData& player, PlayItem& item, bool clearBuffers)
{
    if (!item.data) return false;
    if (enqueue(player, item, clearBuffers)) return true;
    freeItem(item);
    return false;
}

bool TakeNextPlayItem(AudioPlayerData& player)
{
    const MutexLock lock(&playQLock);
    if (!lock || player.queueCount <= 0 || !player.queue[0].data) return false;
    player.current = player.queue[0];
    std::copy(player.queue + 1, player.queue + player.queueCount, player.queue);
    player.queue[--player.queueCount] = {};
    storeRelaxed(player.outputPositionRelative, 0.0);
    return true;
}

void FreeAllPlayItems(AudioPlayerData& player)
{
    if (const MutexLock lock(&playQLock); lock) {
        std::for_each(std::begin(player.queue), std::end(player.queue), freeItem);
        player.queueCount = 0;
    }
    freeItem(player.current);
}

std::int32_t freeSpace(AudioPlayerData& player)
{
    const MutexLock lock(&playQLock);
    return lock ? queueCapacity - player.queueCount : 0;
}

} // namespace player
