// Which source channel each destination channel plays.
#pragma once

#include "platform/pcm/gain.h"

#include <CoreAudio/CoreAudio.h>

#include <vector>

namespace kvxplatform::audiounit {

/// One entry a destination channel: a source channel from 0, or -1 for silence. A destination channel behind
/// the end is silent, and so is one whose source channel does not exist.
using ChannelMap = std::vector<SInt32>;

constexpr SInt32 silentChannel = -1;

/// The source channel of a destination channel; without a map, channel n goes to channel n. -1: silence.
SInt32 sourceOf(const ChannelMap* map, UInt32 destination, UInt32 sourceChannels);

/// Write frames of in[frame * sourceChannels + channel] as destination channels [first, first + channels)
/// into out[frame * channels + channel]. With unity gain, samples are copied as they are.
void mapChannels(const Float32* in, UInt32 sourceChannels, UInt32 frames, const ChannelMap* map,
                 const pcm::Gain& gain, UInt32 firstFrame, UInt32 first, UInt32 channels, Float32* out);

} // namespace kvxplatform::audiounit
