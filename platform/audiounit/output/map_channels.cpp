#include "platform/audiounit/output/map_channels.h"

#include <algorithm>
#include <cstddef>

namespace kvxplatform::audiounit {

SInt32 sourceChannelOf(const pcm::ChannelMap* map, UInt32 destination, UInt32 sourceChannels)
{
    SInt32 source = pcm::silentChannel;
    if (!map)
        source = static_cast<SInt32>(destination);
    else if (destination < map->size())
        source = (*map)[destination];
    return source >= 0 && static_cast<UInt32>(source) < sourceChannels ? source : pcm::silentChannel;
}

void mapChannels(const Float32* in, UInt32 sourceChannels, UInt32 frames, const pcm::ChannelMap* map,
                 const pcm::Gain& gain, UInt32 firstFrame, UInt32 first, UInt32 channels, Float32* out)
{
    if (!map && first == 0 && channels == sourceChannels && gain.isUnity()) {
        std::copy_n(in, std::size_t{frames} * channels, out);
        return;
    }
    for (UInt32 c = 0; c < channels; ++c) {
        const SInt32 source = sourceChannelOf(map, first + c, sourceChannels);
        Float32* to = out + c;
        if (source == pcm::silentChannel) {
            for (UInt32 i = 0; i < frames; ++i) to[std::size_t{i} * channels] = 0;
            continue;
        }
        const Float32* from = in + source;
        if (gain.isUnity())
            for (UInt32 i = 0; i < frames; ++i)
                to[std::size_t{i} * channels] = from[std::size_t{i} * sourceChannels];
        else
            for (UInt32 i = 0; i < frames; ++i)
                to[std::size_t{i} * channels] =
                    from[std::size_t{i} * sourceChannels] * gain.at(firstFrame + i);
    }
}

} // namespace kvxplatform::audiounit
