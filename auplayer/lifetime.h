// An object comes and goes.
#pragma once

#include "abi/class_definition.h"

namespace auplayer {

/// The host hands over a record of zeros. Without memory for the rest, no load succeeds. [main]
void AUPlayerConstructor(REALobjectStruct* object);

/// Give up everything, the graph first: with it playing ends. The texts of the formats stay the host's.
/// [main]
void AUPlayerDestructor(REALobjectStruct* object);

} // namespace auplayer
