// Builds the graph that plays a decoded file, which is the second part of a load.
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// Make the graph with its six units, set up the units, and initialise the graph without starting it.
/// Returns false at the first platform call that fails, with the status of that call in `Lasterror`. Graph
///         and units made before the failure stay in the record until the object is destroyed.
/// [main], [worker]
bool buildGraph(AUPlayerData& player);

} // namespace auplayer
