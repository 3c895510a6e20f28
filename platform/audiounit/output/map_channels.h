// Writes the client's channels to the channels of a device.
// All functions: [any].
#pragma once

#include "platform/pcm/channel_map.h"
#include "platform/pcm/gain.h"

namespace kvxplatform::audiounit {

/// Returns  the source channel that a destination channel plays, or silentChannel. Without a map, channel n
///          plays n.
SInt32 sourceChannelOf(const pcm::ChannelMap* map, UInt32 destination, UInt32 sourceChannels);

/// Write in[frame * sourceChannels + channel] as destination channels
/// [first, first + channels) to out[frame * channels + channel]. `gain` applies from frame `firstFrame` of
/// its slice on. At unity gain, samples are copied unchanged.
void mapChannels(const Float32* in, UInt32 sourceChannels, UInt32 frames, const pcm::ChannelMap* map,
                 const pcm::Gain& gain, UInt32 firstFrame, UInt32 first, UInt32 channels, Float32* out);

} // namespace kvxplatform::audiounit
