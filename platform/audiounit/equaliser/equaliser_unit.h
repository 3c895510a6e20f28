// The graphic equaliser's row: 10 bands of an octave or 31 of a third.
// unit_kind.h states the contracts of the functions.
#pragma once

#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

extern const Property equaliserProperties[3];
extern const Parameter equaliserParameters[2];

OSStatus openEqualiser(Unit& unit);
void destroyEqualiser(void* state);
OSStatus initializeEqualiser(Unit& unit);
void resetEqualiser(Unit& unit);
OSStatus renderEqualiser(Unit& unit, Slice& slice);

} // namespace kvxplatform::audiounit
