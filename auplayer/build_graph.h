// The graph around a decoded file: the second part of a load.
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// Make the graph, its six units and their settings, and initialise it; it is not started.
/// Returns false at the first platform call that fails, whose status is in `Lasterror`. The parts made before
///         stay in the record until the object is destroyed.
/// [main | worker]
bool buildGraph(AUPlayerData& player);

} // namespace auplayer
