// Construction and destruction of a player object.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"

namespace auplayer {

/// Initialise the class data, which the host has zeroed. If memory for loadedAudio or a format is missing,
/// every later load fails.
void AUPlayerConstructor(REALobjectStruct* object);

/// Release the graph, which stops playing, and then everything else that the class data owns. The host
/// releases the two format strings.
void AUPlayerDestructor(REALobjectStruct* object);

} // namespace auplayer
