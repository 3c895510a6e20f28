// The list of living listeners: an event queued for a listener that was destroyed before the event ran is
// dropped, also when another object has taken its address. No reference to the host object is held.
//
// Each listener takes the next serial at construction. A notification records the latest serial; on the main
// thread its event is delivered only if the listener at that address is living and not younger.
#pragma once

#include "abi/class_definition.h"

#include <cstdint>

namespace listener {

using Serial = std::uint64_t;

/// The serial of the latest construction. [any]
Serial latestSerial();

/// List `object` with the next serial; an object that is listed keeps its serial. Without memory the object
/// is not listed and never fires. [main]
void addLiveListener(REALobjectStruct* object);

/// Strike `object` off. [main]
void removeLiveListener(REALobjectStruct* object);

/// Whether a notification noted at `moment` is meant for the listener that now lives at that address. [main]
bool isMeantFor(REALobjectStruct* object, Serial moment);

} // namespace listener
