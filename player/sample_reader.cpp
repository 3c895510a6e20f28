#include "player/sample_reader.h"

#include "player/play_queue.h"

#include <cstdlib>

namespace player {

float GetSample(AudioPlayerData& player, std::int64_t index)
{
    if (!player.current.data) return 0.0f;
    std::int64_t relative = wrappingAdd(index, -player.baseSampleIndex);
    if (relative < 0) return 0.0f;
    if (relative < player.current.count) return player.current.data[relative];

    relative -= player.current.count;
    player.baseSampleIndex += player.current.count;
    std::free(player.current.data);
    player.current = {};
    if (!TakeNextPlayItem(player)) return 0.0f;
    return relative < player.current.count ? player.current.data[relative] : 0.0f;
}

} // namespace player
