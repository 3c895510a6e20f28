// The list of live listeners, used to drop a queued event whose listener has been destroyed, even if a new
// listener has the same address. The list holds no reference to a host object.
//
// Each construction of a listener takes the next serial number. A notification records the address of its
// listener and the latest serial number. The notification's event is delivered only if a live listener has
// that address and a serial number that is not greater than the recorded number.
#pragma once

#include "abi/class_definition.h"

#include <cstdint>

namespace listener {

using Serial = std::uint64_t;

/// Serial number of the latest construction.
/// [any]
Serial latestSerial();

/// Add `object` with the next serial number. An object that is already in the list keeps its serial number.
/// Errors  if memory is exhausted, the object is not added and receives no events.
/// [main]
void addLiveListener(REALobjectStruct* object);

/// Remove `object` from the list.
/// [main]
void removeLiveListener(REALobjectStruct* object);

/// Whether `object` is a live listener that was constructed before a notification recorded `recordedSerial`.
/// [main]
bool belongsTo(REALobjectStruct* object, Serial recordedSerial);

} // namespace listener
