// From the platform's handles to units.
#pragma once

#include "platform/audiounit/unit.h"
#include "platform/components/instances.h"

namespace kvxplatform::audiounit {

/// A unit behind its handle, whole for as long as this lives.
struct UnitUse {
    components::Instances::Use instance;
    OSStatus status; // badComponentInstance: no such instance; badComponentSelector: no audio unit

    Unit& operator*() const { return *static_cast<Unit*>(instance->state); }
    Unit* operator->() const { return static_cast<Unit*>(instance->state); }
};

/// Thread [any], [audio] too.
UnitUse use(AudioUnit handle);

} // namespace kvxplatform::audiounit
