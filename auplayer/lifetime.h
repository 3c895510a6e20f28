// Construction and destruction of an object.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"

namespace auplayer {

/// Fill the record, which the host has zeroed. Without memory for its parts every load fails.
void AUPlayerConstructor(REALobjectStruct* object);

/// Release everything; the graph first, which stops playing. The texts of the formats stay the host's.
void AUPlayerDestructor(REALobjectStruct* object);

} // namespace auplayer
