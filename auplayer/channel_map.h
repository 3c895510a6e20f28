// The methods that read and set the output unit's channel map.
// All functions: [main].
#pragma once

#include "auplayer/au_player.h"
#include "plugin/host_array.h"

namespace auplayer {

/// Return the channel map as a new array.
/// Shape   one entry per device channel: the number of its source channel, or -1 for no source.
/// Errors  a failed platform call returns nil, with the status in `Lasterror`; missing memory returns nil and
///         raises "OutOfMemoryException".
ArrayOf<HostInteger>* ChannelMap(REALobjectStruct* object);

/// Set the channel map. Entries without a value become -1; extra values are dropped.
/// Errors  a failed platform call leaves the map unchanged and sets `Lasterror` to its status; missing memory
///         raises "OutOfMemoryException".
void setChannelMap(REALobjectStruct* object, ArrayOf<HostInteger>* values);

} // namespace auplayer
