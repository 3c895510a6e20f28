#include "platform/pcm/channel_map.h"

#include "platform/pcm/stream_format.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace kvxplatform::pcm {

ChannelMap foldedChannelMap(UInt32 sourceChannels, UInt32 destinationChannels)
{
    ChannelMap map(destinationChannels, silentChannel);
    std::iota(map.begin(), map.begin() + std::min(sourceChannels, destinationChannels), 0);
    if (sourceChannels == 1 && destinationChannels > 1) map[1] = 0;
    return map;
}

ChannelMap identityChannelMap(UInt32 channels)
{
    ChannelMap map(channels);
    std::iota(map.begin(), map.end(), 0);
    return map;
}

std::optional<ChannelMap> channelMapFrom(const void* data, UInt32 bytes)
{
    constexpr UInt32 most = mostChannels * sizeof(SInt32);
    if (bytes == 0 || bytes % sizeof(SInt32) || bytes > most) return std::nullopt;
    ChannelMap map(bytes / sizeof(SInt32));
    std::memcpy(map.data(), data, bytes);
    if (std::any_of(map.begin(), map.end(), [](SInt32 entry) { return entry < silentChannel; }))
        return std::nullopt;
    return map;
}

} // namespace kvxplatform::pcm
