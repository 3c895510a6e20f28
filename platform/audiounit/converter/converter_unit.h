// The converter unit: one input in any linear PCM format, one output in any other.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

extern const UnitKind converter;

} // namespace kvxplatform::audiounit
