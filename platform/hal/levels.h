// Volumes: scalars as programs set them, decibels, gains, and the glide from one gain to another.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <cmath>

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

// A scalar of 0 to 1 is linear in decibels, from the lowest volume to 0 dB. All functions: [any].

constexpr float lowestDecibels = -64;

/// Full volume is 0 dB, not minus 0.
inline float decibelsOfScalar(float scalar)
{
    return lowestDecibels - lowestDecibels * std::clamp(scalar, 0.0f, 1.0f);
}

inline float scalarOfDecibels(float decibels)
{
    return 1 - std::clamp(decibels, lowestDecibels, 0.0f) / lowestDecibels;
}

/// Full volume is exactly 1; a scalar of 0 is silence rather than the lowest volume.
inline float gainOfScalar(float scalar)
{
    if (scalar <= 0) return 0;
    return std::pow(10.0f, decibelsOfScalar(scalar) / 20);
}

} // namespace kvxplatform::hal
