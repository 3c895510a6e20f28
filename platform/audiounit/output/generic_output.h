// The table row of the generic output unit, an output unit without a device. The caller that renders its
// output pulls the client's input. Input and output may have any linear PCM format and rate.
// unit_kind.h states the contracts of the functions.
#pragma once

#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

extern const Property genericOutputProperties[3];

OSStatus openGenericOutput(Unit& unit);
void destroyGenericOutput(void* state);
OSStatus initializeGenericOutput(Unit& unit);
void uninitializeGenericOutput(Unit& unit);
OSStatus renewGenericOutput(Unit& unit);
void resetGenericOutput(Unit& unit);
OSStatus renderGenericOutput(Unit& unit, Slice& slice);
OSStatus startGenericOutput(Unit& unit);
OSStatus stopGenericOutput(Unit& unit);

} // namespace kvxplatform::audiounit
