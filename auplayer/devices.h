// The output device of the graph, and the devices there are. Thread: [main].
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// The output unit's device; 0, with the status in `Lasterror`, before a load.
std::uint32_t getCurrentDeviceID(REALobjectStruct* object, HostInteger);
void setCurrentDeviceID(REALobjectStruct* object, HostInteger, std::uint32_t device);

/// The system's default output device; 0 if there is none.
std::uint32_t getDefaultDeviceID(REALobjectStruct* object, HostInteger);

/// A new host Dictionary: the names of the devices with an output side, by their identifiers. A device whose
/// name cannot be read is left out.
/// Errors  no device at all, or no memory, raises "OutOfMemoryException"; then, and on a platform's refusal,
///         nil.
REALobjectStruct* getOuputDevices(REALobjectStruct* object, HostInteger);

} // namespace auplayer
