// Where sound is shaped.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

extern const UnitKind graphicEqualiser; // 10 bands of an octave or 31 of a third

} // namespace kvxplatform::audiounit
