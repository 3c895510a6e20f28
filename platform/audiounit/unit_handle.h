// From the platform's handles to units.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/components/instances.h"

namespace kvxplatform::audiounit {

/// The unit that a handle names. It is not freed while this object lives.
struct UnitUse {
    components::Instances::Use instance;
    OSStatus status; ///< badComponentInstance: no such instance; badComponentSelector: not an audio unit

    Unit& operator*() const { return *static_cast<Unit*>(instance->state); }
    Unit* operator->() const { return static_cast<Unit*>(instance->state); }
};

/// Find the unit that a handle names.
/// [any]
UnitUse use(AudioUnit handle);

/// Free the state of an instance; `use` recognises audio units by this function in their family.
/// [any]
void destroyUnit(void* unit);

} // namespace kvxplatform::audiounit
