// Which source channel each destination channel plays.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <vector>

namespace kvxplatform::audiounit {

/// One entry a destination channel: a source channel from 0, or -1 for silence. A destination channel behind
/// the end is silent, and so is one whose source channel does not exist.
using ChannelMap = std::vector<SInt32>;

constexpr SInt32 silentChannel = -1;

/// The source channel of a destination channel; without a map, channel n goes to channel n. -1: silence.
SInt32 sourceOf(const ChannelMap* map, UInt32 destination, UInt32 sourceChannels);

/// A gain, going from one value to another in a straight line of `glideFrames`, however they are sliced.
struct Gain {
    static constexpr UInt32 glideFrames = 512;

    Float32 from, to;
    UInt32 framesLeft = 0; ///< before the first frame

    /// Of frame i, from 0; exactly `to` once the way is over.
    Float32 at(UInt32 frame) const { return after(frame + 1); }
    bool isUnity() const { return to == 1 && framesLeft == 0; }

    void turnTo(Float32 target)
    {
        if (target != to) *this = {after(0), target, glideFrames};
    }
    void pass(UInt32 frames) { framesLeft -= frames < framesLeft ? frames : framesLeft; }

private:
    Float32 after(UInt32 frames) const
    {
        const UInt32 left = frames < framesLeft ? framesLeft - frames : 0;
        return to + (from - to) * (static_cast<Float32>(left) / static_cast<Float32>(glideFrames));
    }
};

/// Write frames of in[frame * sourceChannels + channel] as destination channels [first, first + channels)
/// into out[frame * channels + channel]. With unity gain, samples are copied as they are.
void place(const Float32* in, UInt32 sourceChannels, UInt32 frames, const ChannelMap* map, const Gain& gain,
           UInt32 firstFrame, UInt32 first, UInt32 channels, Float32* out);

} // namespace kvxplatform::audiounit
