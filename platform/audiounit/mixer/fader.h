// Samples under a gain. Unity gain copies every bit; a gain of 0 writes silence whatever the input is.
#pragma once

#include "platform/pcm/gain.h"

namespace kvxplatform::audiounit {

// The gain begins with the first sample and is not advanced.
// All functions: [any]. They allocate nothing.

/// samples[i] *= gain
void applyGain(const pcm::Gain& gain, Float32* samples, UInt32 frames);

/// out[i] = gain * in[i]; `in` may be `out`.
void copyWithGain(const pcm::Gain& gain, const Float32* in, Float32* out, UInt32 frames);

/// out[i] += gain * in[i]
void addWithGain(const pcm::Gain& gain, const Float32* in, Float32* out, UInt32 frames);

} // namespace kvxplatform::audiounit
