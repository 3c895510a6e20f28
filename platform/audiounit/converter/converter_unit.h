// The converter unit's row: one input in any linear PCM format, one output in any other.
#pragma once

#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

extern const Property converterProperties[5];

OSStatus openConverter(Unit& unit);
void destroyConverter(void* state);
OSStatus initializeConverter(Unit& unit);
void uninitializeConverter(Unit& unit);
void resetConverter(Unit& unit);
OSStatus renderConverter(Unit& unit, Slice& slice);

} // namespace kvxplatform::audiounit
