// Samples under a gain. With unity gain they are copied as they are, word for word; with none they are
// silence, whatever they were.
#pragma once

#include "platform/pcm/gain.h"

namespace kvxplatform::audiounit {

/// samples[i] *= gain, from the gain's first frame.
void applyGain(const pcm::Gain& gain, Float32* samples, UInt32 frames);

/// out[i] = gain * in[i], and out[i] += gain * in[i].
void copyWithGain(const pcm::Gain& gain, const Float32* in, Float32* out, UInt32 frames);
void addWithGain(const pcm::Gain& gain, const Float32* in, Float32* out, UInt32 frames);

} // namespace kvxplatform::audiounit
