// Which channel of a source each channel of a destination plays when their counts differ and nobody said
// otherwise: channel n plays n, further ones are dropped, missing ones silent; but a single channel plays on
// the first two.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

constexpr SInt32 silentChannel = -1;

/// The source channel, or silentChannel for silence.
constexpr SInt32 foldedFrom(UInt32 destination, UInt32 sourceChannels)
{
    if (sourceChannels == 1 && destination == 1) return 0;
    return destination < sourceChannels ? static_cast<SInt32>(destination) : silentChannel;
}

} // namespace kvxplatform::pcm
