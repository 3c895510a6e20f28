// Audio units as components.
// All functions: [any].
#pragma once

#include "platform/audiounit/unit_kind.h"
#include "platform/components/component.h"

namespace kvxplatform::audiounit {

extern const components::Family family;

/// The component of a kind of unit, which outlives it.
components::Component componentOf(const UnitKind& kind);

} // namespace kvxplatform::audiounit
