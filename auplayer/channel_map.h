// The output unit's channel map.
// All functions: [main].
#pragma once

#include "auplayer/au_player.h"
#include "plugin/host_array.h"

namespace auplayer {

/// Return the channel map as a new array.
/// Shape   one entry per device channel: the source channel, or -1.
/// Errors  nil, with the platform's status in `Lasterror`; missing memory raises "OutOfMemoryException".
ArrayOf<HostInteger>* ChannelMap(REALobjectStruct* object);

/// Set the channel map. Missing entries become -1; extra values are dropped.
/// Errors  as ChannelMap; the map stays unchanged.
void setChannelMap(REALobjectStruct* object, ArrayOf<HostInteger>* values);

} // namespace auplayer
