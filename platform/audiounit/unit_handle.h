// Finds the unit that a platform handle names.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/components/instances.h"

namespace kvxplatform::audiounit {

/// A use of the unit that a handle names. The unit is not freed while this object lives.
struct UnitUse {
    components::Instances::Use instance;
    /// The status of the handle. badComponentInstance: no such instance; badComponentSelector: the instance
    /// is not an audio unit.
    OSStatus status;

    Unit& operator*() const { return *static_cast<Unit*>(instance->state); }
    Unit* operator->() const { return static_cast<Unit*>(instance->state); }
};

/// Find the unit that a handle names.
/// [any]
UnitUse use(AudioUnit handle);

/// Free the state of a unit's component instance. use() recognises audio units by this function, which only
/// the component family of audio units has.
/// [any]
void destroyUnit(void* unit);

} // namespace kvxplatform::audiounit
