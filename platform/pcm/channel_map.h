// Channel maps: for each destination channel, the source channel that it plays.
// All functions: [any]; they allocate.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <optional>
#include <vector>

namespace kvxplatform::pcm {

/// map[destination channel] = source channel, counted from 0. A destination channel past the end of the map,
/// and one whose source channel does not exist, is silent.
using ChannelMap = std::vector<SInt32>;

constexpr SInt32 silentChannel = -1;

/// The default map: channel n plays n, missing channels are silent, and a mono source plays on the first two.
ChannelMap foldedChannelMap(UInt32 sourceChannels, UInt32 destinationChannels);

/// Channel n plays n.
ChannelMap identityChannelMap(UInt32 channels);

/// The map in a property's value, an array of SInt32. Empty if the size is not one of 1 to mostChannels
/// entries, or an entry is below -1.
std::optional<ChannelMap> channelMapFrom(const void* data, UInt32 bytes);

} // namespace kvxplatform::pcm
