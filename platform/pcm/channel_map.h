// Channel maps: for each destination channel, the source channel that it plays.
// All functions: [any]. They allocate.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <optional>
#include <vector>

namespace kvxplatform::pcm {

/// map[destination channel] = source channel, counted from 0. A destination channel is silent if it lies past
/// the end of the map or if its source channel does not exist.
using ChannelMap = std::vector<SInt32>;

constexpr SInt32 silentChannel = -1;

/// Returns  the default map: destination channel n plays source channel n, destination channels without a
///          source channel are silent, and a mono source plays on the first two destination channels.
ChannelMap foldedChannelMap(UInt32 sourceChannels, UInt32 destinationChannels);

/// Returns  the map in which destination channel n plays source channel n.
ChannelMap identityChannelMap(UInt32 channels);

/// Read a channel map from the value of a property, an array of SInt32.
/// Returns  no value if the size is not that of 1 to mostChannels entries, or if an entry is less than -1.
std::optional<ChannelMap> channelMapFrom(const void* data, UInt32 bytes);

} // namespace kvxplatform::pcm
