// The table row of the graphic equaliser, which has 10 octave bands or 31 third-octave bands.
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
