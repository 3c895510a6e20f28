// The table row of the converter unit, which has one input and one output, each in any linear PCM format.
// unit_kind.h states the contracts of the functions.
#pragma once

#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

extern const Property converterProperties[5];

OSStatus openConverter(Unit& unit);
void destroyConverter(void* state);
OSStatus initializeConverter(Unit& unit);
void uninitializeConverter(Unit& unit);
OSStatus renewConverter(Unit& unit);
void resetConverter(Unit& unit);
OSStatus renderConverter(Unit& unit, Slice& slice);

} // namespace kvxplatform::audiounit
