// The units there are.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/components/component.h"

namespace kvxplatform::audiounit {

/// What all units have in common as components.
extern const components::Family family;

/// The table of units, as components.
std::size_t unitCount();
components::Component describe(std::size_t index);

} // namespace kvxplatform::audiounit
