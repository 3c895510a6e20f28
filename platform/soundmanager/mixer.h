// The mixer: sums its sources into blocks of the format it was opened with.
#pragma once

#include "platform/components/component.h"

namespace kvxplatform::soundmanager {

/// The family of mixers, and its one component.
extern const components::Family mixerFamily;
std::size_t componentCount();
components::Component describe(std::size_t index);

/// Say what an open mixer is to give. Errors: those of linearPCM; paramErr for an instance that is no mixer.
/// Throws std::bad_alloc.
OSErr setOutput(ComponentInstance mixer, const SoundComponentData& description);

} // namespace kvxplatform::soundmanager
