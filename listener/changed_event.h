// The platform's notification, delivered to the host program as the event `Changed`.
#pragma once

#include "abi/class_definition.h"

#include <CoreAudio/CoreAudio.h>

namespace listener {

/// The listener function registered with the platform; `client` is the host object. On the main thread it
/// runs the host program's handler; on other threads it queues the event and does not wait.
/// Shape   each call creates one event; the changed addresses are ignored.
/// Returns always 0.
/// [any]
OSStatus propertyChanged(AudioObjectID objectID, UInt32 addressCount,
                         const AudioObjectPropertyAddress* addresses, void* client);

/// The class's only event. Its record contains the key for the host program's handler.
extern REALevent changedEvent[1];

} // namespace listener
