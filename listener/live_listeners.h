// Which listeners live, so that an event queued for one that has gone meanwhile is dropped, also when another
// object has taken its address. No reference to the host object is held for it.
//
// Each construction takes the next serial. A notification notes the serial of its moment; on the main thread
// it is good only if a listener at that address lives, and is not younger.
#pragma once

#include "abi/class_definition.h"

#include <cstdint>

namespace listener {

using Serial = std::uint64_t;

/// The serial of the latest construction. [any]
Serial latestSerial();

/// Enter `object` with the next serial. Without memory for it the object is not entered, and never fires.
/// [main]
void addLiveListener(REALobjectStruct* object);

/// Strike `object` off. [main]
void removeLiveListener(REALobjectStruct* object);

/// Whether a notification noted at `moment` is meant for the listener that now lives at that address. [main]
bool isMeantFor(REALobjectStruct* object, Serial moment);

} // namespace listener
