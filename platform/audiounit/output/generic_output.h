// The generic output unit's row: an output unit without a device. The caller that renders its output pulls
// the client's input, in any linear PCM format and rate on either side.
// unit_kind.h states the contracts of the functions.
#pragma once

#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

extern const Property genericOutputProperties[2];

OSStatus openGenericOutput(Unit& unit);
void destroyGenericOutput(void* state);
OSStatus initializeGenericOutput(Unit& unit);
void uninitializeGenericOutput(Unit& unit);
void resetGenericOutput(Unit& unit);
OSStatus renderGenericOutput(Unit& unit, Slice& slice);
OSStatus startGenericOutput(Unit& unit);
OSStatus stopGenericOutput(Unit& unit);

} // namespace kvxplatform::audiounit
