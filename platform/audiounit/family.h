// The component family of audio units.
// All functions: [any].
#pragma once

#include "platform/audiounit/unit_kind.h"
#include "platform/components/component.h"

namespace kvxplatform::audiounit {

extern const components::Family family;

/// Returns  the component of a unit kind. `kind` must outlive the component.
components::Component componentOf(const UnitKind& kind);

} // namespace kvxplatform::audiounit
