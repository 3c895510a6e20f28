// Volumes: scalars as programs set them, decibels, gains, and the glide from one gain to another.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::hal {

/// The volume of a channel as programs set it.
struct Level {
    float scalar = 1;
    bool isMuted = false;
};

/// A gain that moves to another in a straight line of `glideFrames` frames, at any slice size.
constexpr UInt32 glideFrames = 512;
struct Glide {
    float from = 1, to = 1;
    UInt32 framesLeft = 0;

    float now() const
    {
        return to + (from - to) * (static_cast<float>(framesLeft) / static_cast<float>(glideFrames));
    }
};

/// Scalars 0 to 1 are linear in decibels, from the lowest volume to 0 dB; a scalar of 0 is a gain of 0.
constexpr float lowestDecibels = -64;
float decibelsOfScalar(float scalar);
float scalarOfDecibels(float decibels);
float gainOfScalar(float scalar);

} // namespace kvxplatform::hal
