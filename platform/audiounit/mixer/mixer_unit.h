// The table row of the multichannel mixer, which sums inputs of any channel count.
// unit_kind.h states the contracts of the functions.
#pragma once

#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

constexpr ElementCount multichannelMixerInputs = {8, 1, 64};

extern const Property mixerProperties[2];
extern const Parameter mixerParameters[12];

OSStatus openMixer(Unit& unit);
void destroyMixer(void* state);
OSStatus initializeMixer(Unit& unit);
void resetMixer(Unit& unit);
OSStatus renderMixer(Unit& unit, Slice& slice);

} // namespace kvxplatform::audiounit
