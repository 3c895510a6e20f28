// The table rows of the units that change rate and pitch.
// unit_kind.h states the contracts of the functions.
#pragma once

#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

extern const Property rateProperties[5];
extern const Parameter newTimePitchParameters[4];
extern const Parameter timePitchParameters[2];
extern const Parameter varispeedParameters[2];

OSStatus openNewTimePitch(Unit& unit);
OSStatus openTimePitch(Unit& unit);
OSStatus openVarispeed(Unit& unit);

// The following functions serve all three rate units.
bool takesRateFormat(const Unit& unit, AudioUnitScope scope, AudioUnitElement element,
                     const AudioStreamBasicDescription& format);
void destroyRateUnit(void* state);
OSStatus initializeRateUnit(Unit& unit);
void uninitializeRateUnit(Unit& unit);
void resetRateUnit(Unit& unit);
OSStatus renderRateUnit(Unit& unit, Slice& slice);

} // namespace kvxplatform::audiounit
