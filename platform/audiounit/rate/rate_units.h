// The units that change how fast sound runs, and how high.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

extern const UnitKind newTimePitch;
extern const UnitKind timePitch;
extern const UnitKind varispeed;

} // namespace kvxplatform::audiounit
