// Volumes: scalars (0 to 1) that programs set, decibels, gains, and the glide from one gain to another.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cmath>

namespace kvxplatform::hal {

/// The volume scalar and the mute of one channel, as a program has set them.
struct Level {
    float scalar = 1;
    bool isMuted = false;
};

/// A glide: a gain that moves from one value to another in a straight line over `glideFrames` frames,
/// whatever the slice size.
constexpr UInt32 glideFrames = 512;
struct Glide {
    float from = 1, to = 1;
    UInt32 framesLeft = 0;

    float now() const
    {
        return to + (from - to) * (static_cast<float>(framesLeft) / static_cast<float>(glideFrames));
    }
};

// A scalar from 0 to 1 maps linearly to decibels, from `lowestDecibels` to 0 dB. All functions: [any].

constexpr float lowestDecibels = -64;

/// Decibels of a volume scalar. A scalar of 1 gives plus 0 dB, not minus 0.
inline float decibelsOfScalar(float scalar)
{
    return lowestDecibels - lowestDecibels * std::clamp(scalar, 0.0f, 1.0f);
}

inline float scalarOfDecibels(float decibels)
{
    return 1 - std::clamp(decibels, lowestDecibels, 0.0f) / lowestDecibels;
}

/// Gain of a volume scalar. A scalar of 1 gives a gain of exactly 1; a scalar of 0 gives a gain of 0, not
/// that of `lowestDecibels`.
inline float gainOfScalar(float scalar)
{
    if (scalar <= 0) return 0;
    return std::pow(10.0f, decibelsOfScalar(scalar) / 20);
}

} // namespace kvxplatform::hal
