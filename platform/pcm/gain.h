// A gain that is set while sound runs.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

/// A gain, going from one value to another in a straight line of `rampFrames`, however they are sliced.
struct Gain {
    static constexpr UInt32 rampFrames = 512;

    Float32 from, to;
    UInt32 framesLeft = 0; ///< before the first frame

    /// Of frame i, from 0; exactly `to` once the way is over.
    Float32 at(UInt32 frame) const { return after(frame + 1); }
    bool isUnity() const { return to == 1 && framesLeft == 0; }
    bool isSilence() const { return to == 0 && framesLeft == 0; }

    void rampTo(Float32 target)
    {
        if (target != to) *this = {after(0), target, rampFrames};
    }
    void advance(UInt32 frames) { framesLeft -= frames < framesLeft ? frames : framesLeft; }

private:
    Float32 after(UInt32 frames) const
    {
        const UInt32 left = frames < framesLeft ? framesLeft - frames : 0;
        return to + (from - to) * (static_cast<Float32>(left) / static_cast<Float32>(rampFrames));
    }
};

} // namespace kvxplatform::pcm
