// The list of live listeners. It drops a queued event whose listener has been destroyed, even if a new
// listener has the same address. It holds no reference to a host object.
//
// Each construction takes the next serial. A notification records the latest serial. Its event is delivered
// only to a live listener at that address whose serial is not greater.
#pragma once

#include "abi/class_definition.h"

#include <cstdint>

namespace listener {

using Serial = std::uint64_t;

/// The serial of the latest construction.
/// [any]
Serial latestSerial();

/// Add `object` with the next serial; an object in the list keeps its serial.
/// Errors  without memory the object is not added and receives no events.
/// [main]
void addLiveListener(REALobjectStruct* object);

/// Remove `object` from the list.
/// [main]
void removeLiveListener(REALobjectStruct* object);

/// Whether `object` is a live listener that already existed when the notification recorded that serial.
/// [main]
bool belongsTo(REALobjectStruct* object, Serial recordedSerial);

} // namespace listener
