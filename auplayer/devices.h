// The graph's output device, and the list of output devices.
// All functions: [main].
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// The output unit's device. Before a load the getter returns 0, and `Lasterror` has the platform's status.
std::uint32_t getCurrentDeviceID(REALobjectStruct* object, HostInteger);
void setCurrentDeviceID(REALobjectStruct* object, HostInteger, std::uint32_t device);

/// Return the system's default output device; 0 if there is none.
std::uint32_t getDefaultDeviceID(REALobjectStruct* object, HostInteger);

/// Return a new host Dictionary from identifiers to names: all devices with output and a readable name.
/// Errors  nil if the platform refuses; nil and "OutOfMemoryException" without devices or memory.
REALobjectStruct* getOuputDevices(REALobjectStruct* object, HostInteger);

} // namespace auplayer
