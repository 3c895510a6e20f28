// Delivery of the platform's property notification to the host program, as the event `Changed`.
#pragma once

#include "abi/class_definition.h"

#include <CoreAudio/CoreAudio.h>

namespace listener {

/// The listener function that is registered with the platform; `client` is the host object. On the main
/// thread, this function calls the host program's handler. On other threads, it queues the event for the main
/// thread and does not wait.
/// Shape   each call creates one event; the number and the values of the changed addresses are ignored.
/// Returns always 0.
/// [any]
OSStatus propertyChanged(AudioObjectID objectID, UInt32 addressCount,
                         const AudioObjectPropertyAddress* addresses, void* client);

/// The only event of the class. At registration, the host writes the key for the host program's handler into
/// the event or, in layout 9, into a copy of the event.
extern REALevent changedEvent[1];

} // namespace listener
