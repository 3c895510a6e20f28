// The properties for the graph's output device, the default device and the list of output devices.
// All functions: [main].
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// The identifier of the output unit's device. Before a load the getter returns 0 and sets `Lasterror` to the
/// status of the refused platform call.
std::uint32_t getCurrentDeviceID(REALobjectStruct* object, HostInteger);
void setCurrentDeviceID(REALobjectStruct* object, HostInteger, std::uint32_t device);

/// Return the identifier of the system's default output device, or 0 if there is none.
std::uint32_t getDefaultDeviceID(REALobjectStruct* object, HostInteger);

/// Return a new host Dictionary of all devices that have an output and a readable name. The keys are the
/// device identifiers, and the values are the device names.
/// Errors  a refused platform call returns nil; an empty device list or missing memory returns nil and raises
///         "OutOfMemoryException".
REALobjectStruct* getOuputDevices(REALobjectStruct* object, HostInteger);

} // namespace auplayer
