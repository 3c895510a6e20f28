// A gain that can be set while audio is rendered.
// All functions: [any].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

/// A linear factor that ramps to each new value over `rampFrames` frames, so that no setting clicks. The ramp
/// does not depend on how the frames are divided into slices.
struct Gain {
    static constexpr UInt32 rampFrames = 512;

    Float32 from, to;
    UInt32 framesLeft = 0; ///< of the ramp, before the first frame of the slice

    /// The factor for a frame of the slice, from 0; exactly `to` after the ramp.
    Float32 at(UInt32 frame) const { return after(frame + 1); }
    bool isUnity() const { return to == 1 && framesLeft == 0; }
    bool isSilence() const { return to == 0 && framesLeft == 0; }

    /// Start a ramp from the present value, unless the target is the same.
    void rampTo(Float32 target)
    {
        if (target != to) *this = {after(0), target, rampFrames};
    }

    /// End a slice of `frames` frames.
    void advance(UInt32 frames) { framesLeft -= frames < framesLeft ? frames : framesLeft; }

private:
    Float32 after(UInt32 frames) const
    {
        const UInt32 left = frames < framesLeft ? framesLeft - frames : 0;
        return to + (from - to) * (static_cast<Float32>(left) / static_cast<Float32>(rampFrames));
    }
};

} // namespace kvxplatform::pcm
