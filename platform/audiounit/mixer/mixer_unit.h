// Where several sounds become one.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

extern const UnitKind multichannelMixer; // inputs of any width, added up

} // namespace kvxplatform::audiounit
