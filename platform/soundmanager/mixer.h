// The mixer sound component, which adds its sources and outputs sample blocks in one format.
#pragma once

#include "platform/components/component.h"

namespace kvxplatform::soundmanager {

/// The component family of mixers, and the single component that belongs to this family.
extern const components::Family mixerFamily;
std::size_t componentCount();
components::Component describe(std::size_t index);

/// Set the output format of an open mixer.
/// Errors   those of linearPCM(); paramErr for an instance that is not a mixer. Throws std::bad_alloc.
/// [client]
OSErr setOutput(ComponentInstance mixer, const SoundComponentData& description);

} // namespace kvxplatform::soundmanager
