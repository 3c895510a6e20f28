// A gain that can be set while audio is rendered.
// All functions: [any].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

/// A linear factor that ramps to each new value over `rampFrames` frames, so that no change clicks. The ramp
/// is independent of the division of the frames into slices.
struct Gain {
    static constexpr UInt32 rampFrames = 512;

    Float32 from, to;
    UInt32 framesLeft = 0; ///< frames of the ramp that are left at the first frame of the slice

    /// Returns  the factor for a frame of the slice, counted from 0; exactly `to` after the end of the ramp.
    Float32 at(UInt32 frame) const { return after(frame + 1); }
    bool isUnity() const { return to == 1 && framesLeft == 0; }
    bool isSilence() const { return to == 0 && framesLeft == 0; }

    /// Start a ramp from the present factor to `target`, unless the target is unchanged.
    void rampTo(Float32 target)
    {
        if (target != to) *this = {after(0), target, rampFrames};
    }

    /// Advance the ramp past a slice of `frames` frames.
    void advance(UInt32 frames) { framesLeft -= frames < framesLeft ? frames : framesLeft; }

private:
    Float32 after(UInt32 frames) const
    {
        const UInt32 left = frames < framesLeft ? framesLeft - frames : 0;
        return to + (from - to) * (static_cast<Float32>(left) / static_cast<Float32>(rampFrames));
    }
};

} // namespace kvxplatform::pcm
