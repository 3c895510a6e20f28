// The output units: where sound leaves the graph.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

extern const UnitKind halOutput;     // the device it is told, the default one until then
extern const UnitKind defaultOutput; // follows the default output device
extern const UnitKind systemOutput;  // follows the device of system sounds
extern const UnitKind genericOutput; // no device: rendered by whoever pulls

} // namespace kvxplatform::audiounit
