#include "platform/hal/levels.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::hal {

// Full volume is 0 dB, not minus 0.
float decibelsOfScalar(float scalar)
{
    return lowestDecibels - lowestDecibels * std::clamp(scalar, 0.0f, 1.0f);
}

float scalarOfDecibels(float decibels)
{
    return 1 - std::clamp(decibels, lowestDecibels, 0.0f) / lowestDecibels;
}

// Full volume is exactly 1, and a scalar of 0 is silence rather than the lowest volume.
float gainOfScalar(float scalar)
{
    if (scalar <= 0) return 0;
    return std::pow(10.0f, decibelsOfScalar(scalar) / 20);
}

} // namespace kvxplatform::hal
