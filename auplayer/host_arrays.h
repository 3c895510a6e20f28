// Members that take or give a host array: the output unit's channel map and the equaliser's bands.
// Thread: [main].
#pragma once

#include "auplayer/au_player.h"
#include "plugin/host_array.h"

namespace auplayer {

/// The output unit's channel map as a new array: for each channel of the device the source channel, or -1.
/// Errors  nil, with the status in `Lasterror`; no memory raises "OutOfMemoryException".
ArrayOf<HostInteger>* ChannelMap(REALobjectStruct* object);

/// Set the channel map. Entries that `values` does not reach become -1, those it has too many of are dropped.
/// Errors  nothing changes on a refusal, whose status is in `Lasterror`; no memory raises
///         "OutOfMemoryException".
void setChannelMap(REALobjectStruct* object, ArrayOf<HostInteger>* values);

/// Set the gains of the equaliser's bands, in decibels, from the lowest up; nothing happens before a load.
/// `Lasterror` is left as it is.
/// Errors  nil raises "NilObjectException".
void updateEQDouble(REALobjectStruct* object, ArrayOf<double>* eqBands);
void updateEQSingle(REALobjectStruct* object, ArrayOf<float>* eqBands);

} // namespace auplayer
