// Application of a gain to samples. Unity gain copies every bit; a gain of 0 writes silence for any input.
#pragma once

#include "platform/pcm/gain.h"

namespace kvxplatform::audiounit {

// The gain applies from the first sample on. The functions do not advance its ramp.
// All functions: [any]. They allocate nothing.

/// Compute samples[i] *= gain.
void applyGain(const pcm::Gain& gain, Float32* samples, UInt32 frames);

/// Compute out[i] = gain * in[i]. `in` and `out` may be the same memory.
void copyWithGain(const pcm::Gain& gain, const Float32* in, Float32* out, UInt32 frames);

/// Compute out[i] += gain * in[i].
void addWithGain(const pcm::Gain& gain, const Float32* in, Float32* out, UInt32 frames);

} // namespace kvxplatform::audiounit
